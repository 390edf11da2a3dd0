// SPDX-License-Identifier: MIT

#include <sys/resource.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <exception>
#include <list>
#include <memory>

#include "Base/TCP/zeTCPServer.h"
#include "Base/TCP/zeTCPServerSocket.h"
#include "Base/TCP/zeTCPWaitReadable.h"

#include "Shared/failure.h"
#include "Shared/interruption.h"
#include "Shared/message.h"
#include "Shared/output.h"
#include "Shared/save.h"
#include "relay/command.h"
#include "relay/connection.h"

namespace relay {

namespace {

using app::message;
using std::chrono::milliseconds;
using zeUtil::Interval;
using Clock = Connection::Clock;

/// The shortest wait: zero would be one without limit.
const Interval atOnce("1us");

/// How long until a client that had no room is tried again: zeTCP::WaitReadable does not wait for
/// room.
constexpr milliseconds blockedPause(10);

/// How long until a connection is tried again that could not be accepted. It stays readable, so
/// that waiting for it would not wait.
constexpr milliseconds acceptPause(250);

/// While it lives, SIGHUP, SIGINT and SIGTERM wait, and make a descriptor readable, so that whoever
/// waits for sockets waits for them too. One that is ignored, as under nohup, stays so.
class StopSignals {
public:
    StopSignals() : socket_(signalfd(-1, &set_, SFD_CLOEXEC | SFD_NONBLOCK)) {
        if (socket_.descriptor() == -1)
            throw app::Failure(app::systemMessage(errno));
    }

    /// The signal that has come, once; 0 for none.
    int take() {
        struct signalfd_siginfo info = {};
        const bool isThere = read(socket_.descriptor(), &info, sizeof info) == sizeof info;
        return isThere ? static_cast<int>(info.ssi_signo) : 0;
    }

    const zeTCP::Socket& socket() const { return socket_; }

private:
    static sigset_t watched() {
        sigset_t set;
        sigemptyset(&set);
        for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
            struct sigaction action = {};
            if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
                sigaddset(&set, signal);
        }
        return set;
    }

    const app::HeldSignals held_;
    const sigset_t set_ = watched();
    zeTCP::ServerSocket socket_;
};

/// A server that listens. On all interfaces its result says nothing: see zeTCPServer.h.
std::unique_ptr<zeTCP::Server> listeningServer(const Settings& settings) {
    constexpr int backlog = 1024;
    constexpr int portInUse = 3;
    const int port = settings.port > 0 ? settings.port : -1;
    for (int triesLeft = 20;; --triesLeft) {
        auto server = std::make_unique<zeTCP::Server>(port, backlog);
        if (!settings.isOpenToAny)
            server->setLoopbackOnly();
        const zeUtil::Error error = server->listen();
        if (error.code() == 0 || (settings.isOpenToAny && server->isListening()))
            return server;
        // A port that is free for IPv6 may be taken for IPv4: the next one may not.
        if (error.code() != portInUse || port != -1 || triesLeft == 0)
            throw app::Failure(message("relay.no_port", "port {1}: {2}",
                                       {std::to_string(settings.port), error.message()}));
    }
}

/// How many clients there may be: each has a socket and a file. Raises the process's limit.
std::size_t clientsWithin(int wanted) {
    constexpr rlim_t others = 48;
    struct rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlim_t most = (std::max(limit.rlim_cur, others + 2) - others) / 2;
    return std::min(static_cast<rlim_t>(wanted), most);
}

/// One thread serves all: it waits until something can be read, and nothing else that it does
/// waits.
class Loop {
public:
    Loop(const Settings& settings, Store& store, zeTCP::Server& server)
        : limits_{settings.maxSize, std::chrono::seconds(settings.timeout)},
          maxClients_(clientsWithin(settings.maxClients)),
          store_(store),
          server_(server) {}

    /// Returns the signal that ends it.
    int run(StopSignals& stop) {
        for (;;) {
            const bool accepts = clients_.size() < maxClients_ && Clock::now() >= nextAccept_;
            zeTCP::WaitReadable ready;
            ready.add(stop.socket());
            if (accepts)
                ready.add(server_);
            for (const Connection& client : clients_)
                if (client.isReading())
                    ready.add(client.socket());
            ready.wait(untilNext(accepts));
            if (ready.isReadable(stop.socket())) {
                if (const int signal = stop.take())
                    return signal;
                usleep(1000); // the wait failed: all that was added counts as readable
                continue;
            }
            serveClients(ready);
            if (accepts && ready.isReadable(server_))
                accept();
        }
    }

private:
    /// How long to wait at most.
    Interval untilNext(bool accepts) const {
        Clock::time_point next = Clock::time_point::max();
        if (!accepts && clients_.size() < maxClients_)
            next = nextAccept_;
        for (const Connection& client : clients_) {
            next = std::min(next, client.deadline());
            if (client.isSending())
                next = std::min(next, Clock::now() +
                                          (client.isBlocked() ? blockedPause : milliseconds(0)));
        }
        if (next == Clock::time_point::max())
            return {};
        const std::chrono::duration<double> rest = next - Clock::now();
        return std::max(Interval(std::max(rest.count(), 0.0)), atOnce);
    }

    void serveClients(const zeTCP::WaitReadable& ready) {
        for (auto client = clients_.begin(); client != clients_.end();)
            if (isServed(*client, ready))
                ++client;
            else
                client = clients_.erase(client);
    }

    /// False once the connection is to end. Whatever fails for one client is not the others'
    /// affair.
    static bool isServed(Connection& client, const zeTCP::WaitReadable& ready) {
        try {
            if (client.isReading() && ready.isReadable(client.socket()))
                client.receive();
            if (client.isSending())
                client.send();
            return !client.isOver() && Clock::now() < client.deadline();
        } catch (const std::exception& error) {
            app::report("relay", error.what());
            return false;
        }
    }

    void accept() {
        try {
            const auto [socket, error] = server_.accept(atOnce);
            std::unique_ptr<zeTCP::Socket> client(socket);
            if (error.code() != 0)
                throw app::Failure(app::oneLine(error.message()));
            if (client)
                clients_.emplace_back(std::move(client), store_, limits_);
        } catch (const std::exception& error) {
            app::report("relay", message("relay.no_accept", "a client was not accepted: {1}",
                                         {error.what()}));
            nextAccept_ = Clock::now() + acceptPause;
        }
    }

    const Limits limits_;
    const std::size_t maxClients_;
    Store& store_;
    zeTCP::Server& server_;
    std::list<Connection> clients_;
    Clock::time_point nextAccept_{};
};

/// Tells people and scripts where the server is.
void announce(const Settings& settings, const std::string& port) {
    if (settings.isOpenToAny)
        app::report("", message("relay.any", "warning: every host that reaches this one may read "
                                             "and write the documents: there is no encryption "
                                             "and no authentication"));
    app::results()("%s\n", message("relay.listening", "listening on port {1}", {port}).c_str());
    app::flushResults();
    if (!settings.portFile.empty())
        app::saveFile(app::Target(settings.portFile), [&](int descriptor) {
            if (!app::writeAll(descriptor, port + "\n"))
                throw app::Failure(app::systemMessage(errno));
        });
}

} // namespace

int serve(const Settings& settings) {
    StopSignals stop;
    Store store(settings.words[0]);
    const std::unique_ptr<zeTCP::Server> server = listeningServer(settings);
    announce(settings, std::to_string(server->getPort()));
    const int signal = Loop(settings, store, *server).run(stop);
    if (!settings.portFile.empty())
        unlink(settings.portFile.c_str());
    return signal;
}

} // namespace relay
