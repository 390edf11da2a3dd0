// SPDX-License-Identifier: MIT

/// @file
/// The server's side of one connection.

#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Base/TCP/zeTCPSocket.h"

#include "relay/protocol.h"
#include "relay/store.h"

namespace relay {

/// What the server allows.
struct Limits {
    std::uint64_t size = 0; ///< Of a document, in bytes.
    std::chrono::seconds timeout{};
};

/// A client, from its request to the end of its answer. No operation waits: a Socket whose
/// descriptor does not block ends a read or a write early, and says how far it came.
class Connection {
public:
    using Clock = std::chrono::steady_clock;

    /// Throws a Failure if the socket cannot be used so.
    Connection(std::unique_ptr<zeTCP::Socket> socket, Store& store, const Limits& limits);

    const zeTCP::Socket& socket() const { return *socket_; }

    /// Whether it is to be watched for what the client sends.
    bool isReading() const { return !inputEnded_ && !isOver(); }
    /// Whether something can be sent.
    bool isSending() const { return hasOutput() && hasRoom_; }
    bool isOver() const { return stage_ == Stage::over; }

    /// When it ends unless something moves until then.
    Clock::time_point deadline() const { return deadline_; }

    /// Takes what the client has sent.
    void receive();
    /// Sends what can be sent now.
    void send();
    /// The system has room again for what is to be sent.
    void resume() { hasRoom_ = true; }
    /// The connection is broken.
    void end() { enter(Stage::over); }

private:
    enum class Stage { request, document, answer, farewell, over };

    bool hasOutput() const { return sent_ < output_.size() || unread_ > 0; }
    void take(std::string_view bytes);
    void takeRequest(std::string_view bytes);
    void begin(const Request& request);
    void takeDocument(std::string_view bytes);
    void answer(const char* answer, const std::string& detail);
    bool fillOutput();
    void enter(Stage stage);
    void noteMoved(std::size_t bytes);

    std::unique_ptr<zeTCP::Socket> socket_;
    Store& store_;
    const Limits& limits_;
    Stage stage_ = Stage::request;
    bool inputEnded_ = false;
    std::string request_;          // what has come of it
    std::optional<Upload> upload_; // in the stage document,
    std::uint64_t missing_ = 0;    // and what has yet to come of it
    std::string output_;
    std::size_t sent_ = 0; // of the output
    bool hasRoom_ = true;
    zeUtil::Descriptor document_; // what the client gets, behind the output,
    std::uint64_t unread_ = 0;    // and how much of it
    std::size_t moved_ = 0;       // since the deadline was set
    Clock::time_point deadline_;
};

} // namespace relay
