// SPDX-License-Identifier: MIT

#include "relay/connection.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

#include "Shared/failure.h"

namespace relay {

namespace {

constexpr std::size_t blockSize = 65536;

/// What has to move before a client gets a new time-out: a client that sends a byte now and then
/// does not keep its place.
constexpr std::size_t leastProgress = 4096;

constexpr int connectionClosed = 4; // the code of zeTCP::Socket::read()

} // namespace

Connection::Connection(std::unique_ptr<zeTCP::Socket> socket, Store& store, const Limits& limits)
    : socket_(std::move(socket)), store_(store), limits_(limits) {
    int yes = 1;
    if (ioctl(socket_->descriptor(), FIONBIO, &yes) != 0)
        throw app::Failure("the connection cannot be used");
    socket_->setNoDelay(true); // the end of an answer would wait for what the client sends next
    enter(Stage::request);
}

void Connection::receive() {
    char block[blockSize];
    unsigned long size = 0;
    const zeUtil::Error error = socket_->read(block, sizeof block, &size);
    if (size > 0)
        take({block, size});
    inputEnded_ = error.code() == connectionClosed;
    const bool isFailed = error.code() != 0 && size == 0 && !inputEnded_;
    const bool expectsMore = stage_ != Stage::answer; // a client may end its side before the answer
    if (isFailed || (inputEnded_ && expectsMore))
        enter(Stage::over);
}

/// What comes behind a document or a refused request is of no interest.
void Connection::take(std::string_view bytes) {
    try {
        if (stage_ == Stage::request)
            takeRequest(bytes);
        else if (stage_ == Stage::document)
            takeDocument(bytes);
    } catch (const app::Failure& failure) {
        answer(answers::no, failure.what());
    }
}

void Connection::takeRequest(std::string_view bytes) {
    request_ += bytes;
    std::string_view rest = request_;
    const std::optional<Request> request = relay::takeRequest(rest);
    if (!request)
        return;
    begin(*request);
    if (stage_ == Stage::document)
        takeDocument(rest);
    request_ = {}; // its memory too
}

void Connection::begin(const Request& request) {
    if (request.command == "list") {
        const std::string lines = store_.list();
        answer(answers::ok, std::to_string(lines.size()));
        output_ += lines;
        return;
    }
    if (const char* fault = nameFault(request.name))
        throw app::Failure(fault);
    if (request.command == "get") {
        OpenDocument document = store_.open(request.name);
        answer(answers::ok, std::to_string(document.size));
        document_ = std::move(document.file);
        unread_ = document.size;
    } else if (request.command == "put") {
        if (request.size > limits_.size)
            throw app::Failure("the document has more than " + std::to_string(limits_.size) +
                               " bytes");
        upload_.emplace(store_, request.name);
        missing_ = request.size;
        output_ += answerBytes(answers::send, "");
        enter(Stage::document);
    } else {
        throw app::Failure("there is no such command");
    }
}

void Connection::takeDocument(std::string_view bytes) {
    const std::string_view part = bytes.substr(0, missing_);
    upload_->write(part);
    missing_ -= part.size();
    noteMoved(part.size());
    if (missing_ == 0) {
        upload_->finish();
        answer(answers::ok, "0");
    }
}

void Connection::answer(const char* answer, const std::string& detail) {
    upload_.reset();
    output_ += answerBytes(answer, detail);
    enter(Stage::answer);
}

/// At the end the client closes the connection first, so that the server keeps no trace of it that
/// would hold its port for a minute.
void Connection::send() {
    if (sent_ == output_.size() && !fillOutput())
        return;
    unsigned long size = 0;
    const zeUtil::Error error =
        socket_->write(output_.data() + sent_, output_.size() - sent_, &size);
    sent_ += size;
    noteMoved(size);
    hasRoom_ = error.code() == 0; // or it is broken, and then end() comes
    if (stage_ == Stage::answer && !hasOutput())
        enter(inputEnded_ ? Stage::over : Stage::farewell);
}

/// The next part of the document; false if there is none, or if it cannot be read.
bool Connection::fillOutput() {
    output_.clear();
    sent_ = 0;
    if (unread_ == 0)
        return false;
    output_.resize(std::min<std::uint64_t>(unread_, blockSize));
    const ssize_t size =
        zeUtil::retried([&] { return read(document_.get(), output_.data(), output_.size()); });
    output_.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    unread_ -= output_.size();
    if (output_.empty())
        enter(Stage::over);
    return !output_.empty();
}

void Connection::enter(Stage stage) {
    stage_ = stage;
    moved_ = 0;
    deadline_ = Clock::now() + limits_.timeout;
}

void Connection::noteMoved(std::size_t bytes) {
    moved_ += bytes;
    if (moved_ >= leastProgress)
        enter(stage_);
}

} // namespace relay
