// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "Base/IO/ioBufferedStreamOutput.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/TCP/zeTCPAddress.h"
#include "Base/TCP/zeTCPClientSocket.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/output.h"
#include "Shared/save.h"
#include "Shared/terminal.h"
#include "relay/command.h"
#include "relay/protocol.h"
#include "relay/store.h"

namespace relay {

namespace {

using app::message;
using zeUtil::Descriptor;
using zeUtil::Error;
using zeUtil::retried;

constexpr std::size_t blockSize = 65536;

/// One request, and its answer. Where the server is silent for as long as the time-out, its
/// operations throw a Failure.
class Dialogue {
public:
    explicit Dialogue(const Settings& settings)
        : place_(settings.host + ":" + std::to_string(settings.port)),
          maxSize_(settings.maxSize),
          socket_(zeTCP::Address(app::wide(settings.host), settings.port)) {
        const Error error = socket_.connect();
        if (socket_.descriptor() == -1) // the error alone may be that of an address before
            fail(app::oneLine(error.message()));
        const struct timeval limit = {settings.timeout, 0};
        for (const int option : {SO_RCVTIMEO, SO_SNDTIMEO})
            setsockopt(socket_.descriptor(), SOL_SOCKET, option, &limit, sizeof limit);
        socket_.setNoDelay(true); // each string is two small writes
    }

    void request(const std::string& command, const std::string& name, std::uint64_t size) {
        for (const std::string& text : {std::string(protocol), command, name, std::to_string(size)})
            check(socket_.write(text.c_str()));
    }

    /// Returns the number, if the server gives one. Throws a Failure with its reason for a refusal.
    std::uint64_t expect(const char* answer) {
        zeString::IString found;
        zeString::IString detail;
        check(socket_.read(found));
        check(socket_.read(detail));
        if (app::narrow(found) == answers::no)
            throw app::Failure(
                message("relay.refused", "{1} refuses: {2}", {place_, app::narrow(detail)}));
        if (app::narrow(found) != answer)
            fail(message("relay.not_relay", "it does not answer as a relay server does"));
        const std::uint64_t size = numberFrom(app::narrow(detail)).value_or(0);
        if (size > maxSize_)
            fail(message("relay.too_large", "it sends more than {1} bytes",
                         {std::to_string(maxSize_)}));
        return size;
    }

    /// Passes on so many bytes that the server sends.
    void receive(std::uint64_t size, const std::function<void(std::string_view)>& take) {
        std::string block(blockSize, '\0');
        for (; size > 0; size -= std::min<std::uint64_t>(size, blockSize)) {
            const std::uint64_t part = std::min<std::uint64_t>(size, blockSize);
            check(socket_.read(block.data(), part, nullptr));
            take({block.data(), part});
        }
    }

    /// Sends so many bytes of a file. If the server takes no more, it says why.
    void send(const Descriptor& file, std::uint64_t size) {
        ioBufferedStreamOutput stream;
        stream.openSocket(&socket_);
        std::string block(blockSize, '\0');
        while (size > 0 && stream.getStatus() == streamOK) {
            const ssize_t part = retried([&] {
                return read(file.get(), block.data(), std::min<std::uint64_t>(size, blockSize));
            });
            if (part <= 0)
                throw app::Failure("it was changed while it was read");
            stream.writeData(block.data(), static_cast<int>(part));
            size -= static_cast<std::uint64_t>(part);
        }
        stream.close();
    }

private:
    void check(const Error& error) const {
        if (error.code() != 0)
            fail(app::oneLine(error.message()));
    }
    [[noreturn]] void fail(const std::string& reason) const {
        throw app::Failure(message("relay.no_server", "{1}: {2}", {place_, reason}));
    }

    std::string place_;
    std::uint64_t maxSize_;
    zeTCP::ClientSocket socket_;
};

void require(bool isDone, const std::string& subject) {
    if (!isDone)
        throw app::Failure(subject + ": " + app::systemMessage(errno));
}

void note(const std::string& name, const char* key, const char* english, std::uint64_t size) {
    app::results()(app::normal, "%s\n",
                   app::visible(message(key, english, {name, std::to_string(size)})).c_str());
}

} // namespace

/// Whether it is a document, the server finds out.
void put(const Settings& settings) {
    const std::string& path = settings.words[0];
    const Descriptor file(
        retried([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); }));
    struct stat status = {};
    require(file.isOpen() && fstat(file.get(), &status) == 0, path);
    const auto size = static_cast<std::uint64_t>(status.st_size);
    const std::string name =
        !settings.name.empty() ? settings.name : std::filesystem::path(path).filename().string();
    const app::Step step("put", message("relay.putting", "sending {1}", {path}));
    Dialogue dialogue(settings);
    dialogue.request("put", name, size);
    dialogue.expect(answers::send);
    dialogue.send(file, size);
    dialogue.expect(answers::ok);
    note(name, "relay.put", "{1}: {2} bytes are kept", size);
}

void get(const Settings& settings) {
    const std::string& name = settings.words[0];
    const app::Target target(settings.words[1]);
    const app::Step step("get", message("relay.getting", "receiving {1}", {name}));
    Dialogue dialogue(settings);
    dialogue.request("get", name, 0);
    const std::uint64_t size = dialogue.expect(answers::ok);
    app::saveFile(target, [&](const std::string& path) {
        const Descriptor file(retried(
            [&] { return open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600); }));
        require(file.isOpen(), name);
        dialogue.receive(
            size, [&](std::string_view block) { require(app::writeAll(file.get(), block), name); });
        if (!isDocument(file.get()))
            throw app::Failure(message("relay.no_document", "what came is no document"));
    });
    note(target.name(), "relay.got", "{1}: {2} bytes were received", size);
}

void list(const Settings& settings) {
    Dialogue dialogue(settings);
    dialogue.request("list", "", 0);
    std::string lines;
    dialogue.receive(dialogue.expect(answers::ok), [&](std::string_view block) { lines += block; });
    for (std::size_t at = 0, end = 0; (end = lines.find('\n', at)) != std::string::npos;
         at = end + 1)
        app::results()("%s\n", app::visible(lines.substr(at, end - at)).c_str());
}

} // namespace relay
