// SPDX-License-Identifier: MIT

#include <sys/epoll.h>
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

/// Tells which clients have room again, or are gone. zeTCP::WaitReadable does not wait for room,
/// but for this: it is readable when there is something to tell.
class Room {
public:
    Room() : socket_(epoll_create1(EPOLL_CLOEXEC)) {
        if (socket_.descriptor() == -1)
            throw app::Failure(app::systemMessage(errno));
    }

    /// Each change is told once. The client leaves by itself when its descriptor is closed. False,
    /// with an errno, if it cannot be watched.
    bool watch(Connection& client) {
        struct epoll_event event = {EPOLLOUT | EPOLLET, {&client}};
        const int descriptor = client.socket().descriptor();
        return epoll_ctl(socket_.descriptor(), EPOLL_CTL_ADD, descriptor, &event) == 0;
    }

    void tell() {
        struct epoll_event events[64];
        const int count = epoll_wait(socket_.descriptor(), events, std::size(events), 0);
        for (int i = 0; i < count; ++i) {
            auto& client = *static_cast<Connection*>(events[i].data.ptr);
            client.resume();
            if (events[i].events & (EPOLLERR | EPOLLHUP))
                client.end();
        }
    }

    const zeTCP::Socket& socket() const { return socket_; }

private:
    zeTCP::ServerSocket socket_;
};

/// A server that listens. On all interfaces its result says nothing: see zeTCPServer.h.
std::unique_ptr<zeTCP::Server> listeningServer(const Settings& settings) {
    constexpr int backlog = 1024;
    // A port that is free for IPv6 may be taken for IPv4: the next one may not.
    for (int triesLeft = settings.port == 0 ? 20 : 0;; --triesLeft) {
        auto server =
            std::make_unique<zeTCP::Server>(settings.port == 0 ? -1 : settings.port, backlog);
        if (!settings.isOpenToAny)
            server->setLoopbackOnly();
        const zeUtil::Error error = server->listen();
        if (error.code() == 0 || (settings.isOpenToAny && server->isListening()))
            return server;
        if (triesLeft == 0)
            throw app::Failure(message("relay.no_port", "port {1}: {2}",
                                       {std::to_string(settings.port), error.message()}));
    }
}

/// How many clients are served at once, each with a socket and a file, as far as the process may
/// open them. Raises the process's limit.
std::size_t placesForClients() {
    constexpr rlim_t wanted = 500;
    constexpr rlim_t others = 48;
    struct rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
    return std::clamp((std::max(limit.rlim_cur, others) - others) / 2, rlim_t{1}, wanted);
}

/// One thread serves all: it waits until something can be read, and nothing else that it does
/// waits.
class Loop {
public:
    Loop(const Settings& settings, Store& store, zeTCP::Server& server)
        : limits_{settings.maxSize, std::chrono::seconds(settings.timeout)},
          store_(store),
          server_(server) {}

    /// Returns the signal that ends it.
    int run(StopSignals& stop) {
        for (;;) {
            const bool accepts = clients_.size() < maxClients_ && Clock::now() >= nextAccept_;
            zeTCP::WaitReadable ready;
            ready.add(stop.socket());
            ready.add(room_.socket());
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
            if (ready.isReadable(room_.socket()))
                room_.tell();
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
                return atOnce;
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
            if (!client)
                return;
            if (!room_.watch(clients_.emplace_back(std::move(client), store_, limits_))) {
                const int reason = errno;
                clients_.pop_back();
                throw app::Failure(app::systemMessage(reason));
            }
        } catch (const std::exception& error) {
            app::report("relay", message("relay.no_accept", "a client was not accepted: {1}",
                                         {error.what()}));
            nextAccept_ = Clock::now() + acceptPause;
        }
    }

    const Limits limits_;
    const std::size_t maxClients_ = placesForClients();
    Store& store_;
    zeTCP::Server& server_;
    Room room_;
    std::list<Connection> clients_;
    Clock::time_point nextAccept_{};
};

} // namespace

int serve(const Settings& settings) {
    StopSignals stop;
    Store store(settings.words[0]);
    const std::unique_ptr<zeTCP::Server> server = listeningServer(settings);
    Loop loop(settings, store, *server);
    if (settings.isOpenToAny)
        app::report("", message("relay.any", "warning: every host that reaches this one may read "
                                             "and write the documents: there is no encryption "
                                             "and no authentication"));
    const std::string port = std::to_string(server->getPort());
    app::results()("%s\n", message("relay.listening", "listening on port {1}", {port}).c_str());
    app::flushResults();
    return loop.run(stop);
}

} // namespace relay
