// SPDX-License-Identifier: MIT

#pragma once

#include <sys/socket.h>
#include <sys/wait.h>

#include <functional>

#include "Base/TCP/zeTCPAddress.h"
#include "Base/TCP/zeTCPClientSocket.h"

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
    RelayServer(const std::vector<std::string>& arguments, const PrintedText& printed,
                const std::function<void()>& prepare)
        : process_(fork()) {
        if (process_ == 0) {
            prepare();
            process_ = getpid();
            const auto before = openDescriptors();
            const int code = relay::run(arguments);
            _exit(openDescriptors() == before ? code : 99);
        }
        std::string line;
        for (; !line.ends_with('\n') && waitpid(process_, nullptr, WNOHANG) == 0; usleep(1000))
            line += printed.take();
        if (line.ends_with('\n'))
            port_ = std::stoi(line.substr(line.rfind(' ')));
        else // it has ended
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
    explicit Peer(const RelayServer& server)
        : socket_(zeTCP::Address(zeString::IString(L"127.0.0.1"), server.port())) {
        socket_.connect();
        EXPECT_NE(socket_.descriptor(), -1);
        const timeval limit = {60, 0};
        for (const int option : {SO_RCVTIMEO, SO_SNDTIMEO})
            setsockopt(socket_.descriptor(), SOL_SOCKET, option, &limit, sizeof limit);
        socket_.setNoDelay(true);
    }

    bool send(std::string_view bytes) {
        return socket_.write(bytes.data(), bytes.size(), nullptr).code() == 0;
    }

    /// So many bytes, or those before the server ends the connection.
    std::string receive(std::size_t size = 1 << 20) {
        std::string bytes(size, '\0');
        unsigned long done = 0;
        if (size > 0)
            socket_.read(bytes.data(), size, &done);
        return bytes.substr(0, done);
    }

    void endSending() { socket_.close(2); }

    /// Ends the connection by a reset.
    void reset() {
        const sockaddr nobody = {AF_UNSPEC, {}};
        connect(socket_.descriptor(), &nobody, sizeof nobody);
    }

private:
    zeTCP::ClientSocket socket_;
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
        const char* timeout = "60", const std::function<void()>& prepare = [] {}) const {
        return {{"serve", path("kept"), "--timeout", timeout}, out_, prepare};
    }

    /// Runs a command against a server.
    Result ask(const RelayServer& server, const std::string& line) const {
        return command(line + " --timeout 60 --port " + std::to_string(server.port()));
    }

    std::vector<std::string> keptFiles() const { return filesInFolder("kept"); }

    TempFolder memory_{TempFolder::memory()};
};
