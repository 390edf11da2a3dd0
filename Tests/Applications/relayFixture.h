// SPDX-License-Identifier: MIT

#pragma once

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/wait.h>

#include <functional>

#include "Base/TCP/zeTCPDescriptor.h"

#include "Applications/commandFixture.h"
#include "TCP/Connection.h"
#include "relay/command.h"

/// A packet file of text: one packet with so many bytes, and the last one.
inline std::string document(std::size_t size, char content = 'x') {
    return "^@\n1\n1 0 1\n1 2 4 8 4 8 8\n@\n   0 packetFile_EOF\n   1 blob\n@\n{ 1 0 \"" +
           std::string(size, content) + "\" }\n{ 0 0 }\n";
}

inline std::string request(const std::string& command, const std::string& name,
                           const std::string& size, const std::string& protocol = "relay 1") {
    std::string bytes;
    for (const std::string& text : {protocol, command, name, size})
        bytes +=
            std::string{static_cast<char>(text.size() >> 8), static_cast<char>(text.size())} + text;
    return bytes;
}

inline std::string putRequest(const std::string& name, const std::string& content) {
    return request("put", name, std::to_string(content.size()));
}

/// The bytes of answers.
inline const std::string goAhead("\0\4send\0\0", 8);
inline const std::string kept("\0\2ok\0\1\x30", 7);
inline const std::string refused("\0\2no", 4);

/// A server in a process of its own, which sees to it that no descriptor stays open.
class RelayServer {
public:
    RelayServer(const std::string& folder, const std::string& portFile,
                const std::vector<std::string>& options, const std::function<void()>& prepare)
        : process_(fork()) {
        if (process_ == 0) {
            prepare();
            std::vector<std::string> arguments = {"serve", folder, "--port-file", portFile};
            arguments.insert(arguments.end(), options.begin(), options.end());
            process_ = getpid();
            const auto before = openDescriptors();
            const int code = relay::run(arguments);
            _exit(openDescriptors() == before ? code : 99);
        }
        for (; port_ == 0 && waitpid(process_, nullptr, WNOHANG) == 0; usleep(1000))
            std::ifstream(portFile) >> port_;
        if (port_ == 0) // it has ended
            process_ = -1;
    }
    RelayServer(const RelayServer&) = delete;
    RelayServer& operator=(const RelayServer&) = delete;
    ~RelayServer() { end(SIGKILL); }

    int port() const { return port_; }

    /// How many descriptors it has open.
    std::ptrdiff_t openDescriptors() const {
        using std::filesystem::directory_iterator;
        return std::distance(directory_iterator("/proc/" + std::to_string(process_) + "/fd"),
                             directory_iterator());
    }

    /// Ends it, once; its exit code, or -1 for none.
    int end(int signal) {
        int status = -1;
        if (process_ > 0 && kill(process_, signal) == 0)
            waitpid(std::exchange(process_, -1), &status, 0);
        return status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t process_;
    int port_ = 0;
};

/// A client that does what it likes. No operation waits for more than a minute.
class Peer {
public:
    /// With a small buffer, the system does not read for it.
    explicit Peer(const RelayServer& server, bool isSmall = false)
        : socket_(zeTCP::makeSocket(AF_INET)) {
        const int size = 4096;
        if (isSmall)
            setsockopt(socket_.get(), SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
        const timeval limit = {60, 0};
        const int yes = 1;
        for (const int option : {SO_RCVTIMEO, SO_SNDTIMEO})
            setsockopt(socket_.get(), SOL_SOCKET, option, &limit, sizeof limit);
        setsockopt(socket_.get(), IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(server.port()));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(
            connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }

    bool send(std::string_view bytes) const {
        return ::send(socket_.get(), bytes.data(), bytes.size(), 0) ==
               static_cast<ssize_t>(bytes.size());
    }

    /// So many bytes, or those before the server ends the connection.
    std::string receive(std::size_t size = 1 << 20) const {
        std::string bytes(size, '\0');
        const ssize_t n = size > 0 ? recv(socket_.get(), bytes.data(), size, MSG_WAITALL) : 0;
        return bytes.substr(0, static_cast<std::size_t>(std::max<ssize_t>(n, 0)));
    }

    void endSending() const { shutdown(socket_.get(), SHUT_WR); }

    /// Ends the connection by a reset.
    void reset() {
        const linger none = {1, 0};
        setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &none, sizeof none);
        socket_.close();
    }

private:
    zeUtil::Descriptor socket_;
};

/// With a folder "kept" for servers, in memory: a disk would be waited for three times a document.
class Relay : public Command<relay::run> {
protected:
    void SetUp() override {
        if (const Connection connection; !connection.isThere())
            GTEST_SKIP() << "no loopback network: " << text(connection.error);
        std::filesystem::create_symlink(memory_.path(), path("kept"));
    }

    RelayServer serve(
        const std::vector<std::string>& options = {},
        const std::function<void()>& prepare = [] {}) const {
        std::filesystem::remove(path("port")); // of a server that was killed
        return {path("kept"), path("port"), options, prepare};
    }

    /// Runs a command against a server.
    Result ask(const RelayServer& server, const std::string& line) const {
        return command(line + " --timeout 60 --port " + std::to_string(server.port()));
    }

    std::vector<std::string> keptFiles() const { return filesInFolder("kept"); }

    TempFolder memory_{TempFolder::memory()};
};
