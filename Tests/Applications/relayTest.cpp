// SPDX-License-Identifier: MIT

#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <list>

#include "Support/FaultTrial.h"

#include "Applications/relayFixture.h"
#include "relay/connection.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// Serves what a client sent, through a pair of sockets without a network, and returns the answer.
/// The client's own calls are those that SystemFaults does not know.
std::string answerTo(const std::string& bytes, const std::string& folder) {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    const zeUtil::Descriptor client(ends[0]);
    auto socket = std::make_unique<zeTCP::ServerSocket>(ends[1]);
    EXPECT_EQ(sendto(client.get(), bytes.data(), bytes.size(), 0, nullptr, 0),
              static_cast<ssize_t>(bytes.size()));
    const relay::Limits limits{1 << 20, std::chrono::seconds(60)};
    try {
        relay::Store store(folder);
        relay::Connection connection(std::move(socket), store, limits);
        for (int i = 0; i < 1000 && !connection.isOver(); ++i) {
            pollfd readable = {ends[1], POLLIN, 0};
            if (poll(&readable, 1, 0) > 0)
                connection.receive();
            if (connection.isSending())
                connection.send();
        }
    } catch (const std::exception&) { // the server has ended, or the connection
    }
    std::string answer(4096, '\0');
    const ssize_t n =
        recvfrom(client.get(), answer.data(), answer.size(), MSG_DONTWAIT, nullptr, nullptr);
    return answer.substr(0, static_cast<std::size_t>(std::max<ssize_t>(n, 0)));
}

/// With an old and a new document, and the bytes that put the new one in the place of the old one.
class RelaySafety : public Relay {
protected:
    void restore() const {
        for (const std::string& name : keptFiles())
            std::filesystem::remove(path("kept/" + name));
        folder_.write("kept/a", old_);
    }

    /// Those of a kind: silent, in the middle of a request or of a document, and one that never
    /// reads what it asked for, which is more than the system holds for it.
    std::list<Peer> idlePeers(const RelayServer& server) const {
        folder_.write("kept/large", document(largeSize));
        std::list<Peer> peers;
        for (int i = 0; i < 5; ++i)
            for (const std::string& bytes :
                 {std::string(), put_.substr(0, 9), put_.substr(0, put_.size() - 5),
                  request("get", "large", "0")})
                peers.emplace_back(server).send(bytes);
        return peers;
    }

    static void waitFor(const std::function<bool()>& isSo) {
        for (int i = 0; i < 6000 && !isSo(); ++i)
            usleep(10000);
        EXPECT_TRUE(isSo());
    }

    static constexpr std::size_t largeSize = 20 << 20;
    const std::string old_ = document(10, 'o');
    const std::string new_ = document(20, 'n');
    const std::string put_ = putRequest("a", new_) + new_;
    const std::string whole_ = goAhead + kept;
};

} // namespace

TEST_F(Relay, KeepsDocumentsAndHandsThemBack) {
    for (const std::string method : {"one", "two"})
        folder_.write(method, document(method == "one" ? 5 : 200000));
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        RelayServer server = serve();
        for (const char* line : {"put @two --name one", "put @one", "put @two --name größer"})
            EXPECT_EQ(ask(server, line).code, 0) << line;
        EXPECT_EQ(ask(server, "list").out, "200078 größer\n83 one\n");
        EXPECT_EQ(ask(server, "get größer @got").code, 0);
        EXPECT_TRUE(folder_.read("got") == document(200000));
        const Peer waiting(server);
        EXPECT_EQ(server.end(signal), 128 + signal);
        EXPECT_THAT(keptFiles(), ElementsAre("größer", "one"));
    }
}

TEST_F(Relay, ExplainsWhatItCannotDo) {
    const RelayServer server = serve();
    folder_.write("good", document(1));
    folder_.write("bad", document(1) + "more");
    const std::tuple<int, const char*, const char*> cases[] = {
        {0, "put @good", ""},
        {1, "put @good --name a/b", "refuses: the name of a document has no slash"},
        {1, "put @bad", "refuses: this is no document, or it is damaged or cut off"},
        {1, "get none @got", "refuses: there is no such document"},
        {1, "list --max-size 1", "it sends more than 1 bytes"},
        {1, "serve @kept", "another server has it"},
        {2, "list --port 65536", "'65536' is not a number from 0 to 65535"},
    };
    for (const auto& [code, line, reason] : cases) {
        const Result result = ask(server, line);
        EXPECT_EQ(result.code, code) << line;
        EXPECT_THAT(result.err, HasSubstr(reason)) << line;
    }
    EXPECT_THAT(command("list").err, HasSubstr("list needs -port"));
    EXPECT_THAT(keptFiles(), ElementsAre("good"));
}

TEST_F(Relay, StaysInItsFolderWhateverNameIsAsked) {
    folder_.write("outside", document(1));
    std::filesystem::create_directory(path("kept/folder"));
    for (const char* link : {"kept/link", "kept/.relay"})
        std::filesystem::create_symlink(path("outside"), path(link));
    ASSERT_EQ(mkfifo(path("kept/pipe").c_str(), 0600), 0);
    for (const char* name : {".hidden", ".relaX.0.tmp", "bell\7"})
        folder_.write(std::string("kept/") + name, document(1));
    const RelayServer server = serve();
    EXPECT_EQ(ask(server, "list").out, "");
    std::istringstream words(". .. ../outside /etc/passwd folder/x ..\\x .hidden .relay "
                             "bell\7 \xC3 \u0085");
    std::vector<std::string> names(std::istream_iterator<std::string>(words), {});
    names.insert(names.end(), {"", "line\n", std::string("a\0b", 3), std::string(201, 'n')});
    for (const std::string& name : names)
        for (const char* verb : {"get", "put"}) {
            Peer peer(server);
            peer.send(request(verb, name, "9"));
            EXPECT_THAT(peer.receive(30), StartsWith(refused)) << name;
        }
    for (const char* name : {"folder", "link", "pipe", "none"})
        EXPECT_EQ(ask(server, std::string("get ") + name + " @got").code, 1) << name;
    for (const std::string& name : {std::string("link"), std::string(200, 'n')})
        EXPECT_EQ(ask(server, "put @outside --name " + name).code, 0);
    EXPECT_EQ(ask(server, "put @outside --name folder").code, 1);
    EXPECT_EQ(folder_.read("outside"), document(1));
    EXPECT_TRUE(
        std::filesystem::is_regular_file(std::filesystem::symlink_status(path("kept/link"))));
    EXPECT_THAT(keptFiles(),
                ElementsAre(".hidden", "bell\7", "folder", "link", std::string(200, 'n'), "pipe"));
}

TEST_F(RelaySafety, RefusesWhatIsNoRequestOrNoDocument) {
    restore();
    const std::string longer = std::to_string(new_.size() + 1);
    const std::string damaged = "a" + new_;
    const std::pair<std::string, std::string> cases[] = {
        {request("put", "a", std::to_string(new_.size() - 2)) + new_, goAhead + refused},
        {request("put", "a", longer) + new_, goAhead},
        {request("put", "a", longer) + new_ + "x", goAhead + refused},
        {request("put", "a", "0"), goAhead + refused},
        {putRequest("a", damaged) + damaged, goAhead + refused},
        {request("put", "a", "1048577"), refused},
        {request("put", "a", "18446744073709551616"), refused},
        {request("steal", "a", "0"), refused},
        {request("get", "a", "0", "relay 2"), refused},
        {"GET / HTTP/1.1\r\n", refused},
        {"\xFF\xFF", refused},
    };
    for (const auto& [bytes, answer] : cases) {
        const std::string found = answerTo(bytes, path("kept"));
        EXPECT_EQ(found.substr(0, answer.size()), answer) << bytes;
        EXPECT_TRUE(answer.ends_with(refused) || found == answer);
        EXPECT_THAT(keptFiles(), ElementsAre("a"));
        EXPECT_EQ(folder_.read("kept/a"), old_);
    }
}

/// By close, by a reset, and by the end of the client's side only.
TEST_F(RelaySafety, KeepsTheOldDocumentWhereverATransferBreaksOff) {
    restore();
    RelayServer server = serve();
    for (std::size_t n = 0; n < put_.size(); ++n)
        for (const bool isReset : {false, true}) {
            Peer peer(server);
            peer.send(put_.substr(0, n));
            if (isReset)
                peer.reset();
        }
    const std::string get = request("get", "a", "0");
    const std::string answer = std::string("\0\2ok\0\2", 6) + std::to_string(old_.size()) + old_;
    for (std::size_t n = 0; n < answer.size(); ++n) {
        Peer peer(server);
        peer.send(get);
        EXPECT_EQ(peer.receive(n), answer.substr(0, n));
        peer.reset();
    }
    for (std::size_t n = 0; n <= put_.size(); n += put_.size() / 5) {
        Peer peer(server);
        peer.send(put_.substr(0, n));
        peer.endSending();
        const std::size_t whole = putRequest("a", new_).size();
        EXPECT_EQ(peer.receive(), n == put_.size() ? whole_ : n < whole ? "" : goAhead);
        EXPECT_EQ(folder_.read("kept/a"), n == put_.size() ? new_ : old_);
    }
    EXPECT_EQ(server.end(SIGTERM), 128 + SIGTERM);
    EXPECT_THAT(keptFiles(), ElementsAre("a"));
}

TEST_F(RelaySafety, IsNotHeldUpByClientsThatStandStill) {
    const RelayServer server = serve("600");
    const auto before = server.openDescriptors();
    std::list<Peer> idle = idlePeers(server);
    folder_.write("new", new_);
    EXPECT_EQ(ask(server, "put @new").code, 0);
    EXPECT_EQ(ask(server, "get new @got").code, 0);
    const std::string large = document(largeSize);
    const std::string answer = std::string("\0\2ok\0\x8", 6) + std::to_string(large.size()) + large;
    EXPECT_TRUE(idle.back().receive(answer.size()) == answer); // it reads at last
    idle.pop_back();
    for (Peer& peer : idle)
        peer.endSending(); // those that wait for an answer stay: four, each with a file
    waitFor([&] { return server.openDescriptors() <= before + 8; });
    for (Peer& peer : idle)
        peer.reset();
    waitFor([&] { return server.openDescriptors() <= before; });
    EXPECT_THAT(keptFiles(), ElementsAre("large", "new"));
}

/// A byte now and then is not enough.
TEST_F(RelaySafety, EndsConnectionsThatStandStill) {
    RelayServer server = serve("1");
    const auto before = server.openDescriptors();
    std::list<Peer> idle = idlePeers(server);
    idle.emplace_back(server).send(request("put", "new", "5000"));
    waitFor([&] { return server.openDescriptors() > before; });
    waitFor([&] {
        idle.back().send("x");
        return server.openDescriptors() <= before;
    });
    EXPECT_EQ(server.end(SIGINT), 128 + SIGINT);
    EXPECT_THAT(keptFiles(), ElementsAre("large"));
}

/// The system limits the places. If a client cannot be accepted, a pause follows.
TEST_F(RelaySafety, LetsClientsWaitForAPlace) {
    const auto start = std::chrono::steady_clock::now();
    const RelayServer server = serve("60", [] {
        static const SystemFaults faults(SystemFaults::onAccept4, {{EMFILE}, {ENFILE}});
        const rlimit few = {70, 70};
        setrlimit(RLIMIT_NOFILE, &few);
    });
    std::list<Peer> peers;
    for (int i = 0; i < 40; ++i)
        peers.emplace_back(server).send(put_);
    for (; !peers.empty(); peers.pop_front())
        EXPECT_EQ(peers.front().receive(whole_.size()), whole_);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
    EXPECT_THAT(err_.take(), testing::MatchesRegex("([^\n]*not accepted[^\n]*\n){2}"));
}

TEST_F(RelaySafety, HasTheOldOrTheNewDocumentAtEveryKill) {
    std::size_t n = 0;
    std::set<std::string> found;
    for (bool isKilled = true; isKilled;) {
        restore();
        const pid_t child = fork();
        if (child == 0) {
            SystemFaults::killAt(n + 1, -1);
            answerTo(put_, path("kept"));
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        isKilled = WIFSIGNALED(status);
        found.insert(folder_.read("kept/a"));
        const relay::Store next(path("kept"));
        EXPECT_THAT(keptFiles(), ElementsAre("a")) << "killed at call " << n + 1;
        n += isKilled;
    }
    EXPECT_THAT(found, ElementsAre(new_, old_));
    std::printf("kills tried: %zu, in the middle of relay's puts\n", n);
}

TEST_F(RelaySafety, NeverLosesADocumentWhateverFails) {
    std::string answer;
    FaultTrial trial;
    trial.prepare = [&] { restore(); };
    trial.operation = [&] { answer = answerTo(put_, path("kept")); };
    trial.check = [&](const Fault& fault) {
        const std::string found = folder_.read("kept/a");
        EXPECT_TRUE(found == old_ || found == new_);
        EXPECT_TRUE(answer.find(kept) == std::string::npos || found == new_);
        EXPECT_TRUE(answer.find(refused) == std::string::npos || found == old_);
        EXPECT_TRUE(answer == whole_ || fault.n > 0);
        // What cannot be looked at or deleted is left behind.
        if (fault.call != SystemFaults::onStat && fault.call != SystemFaults::onUnlink) {
            EXPECT_THAT(keptFiles(), ElementsAre("a"));
        }
    };
    const std::string broken = trial.runAll();
    for (const char* call : {"open", "write", "fsync", "rename", "renameat", "send", "recv"})
        EXPECT_THAT(broken, HasSubstr(call));
    trial.report("relay keeping a document");
}

TEST_F(Relay, DescribesEveryOptionInTheHelpAndTheManual) {
    expectSameOptionsIn(RELAY_MAN);
}
