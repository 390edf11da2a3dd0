// SPDX-License-Identifier: MIT

#include "Applications/relayFixture.h"

namespace {

constexpr std::size_t count = 500;

/// Of every size up to some 250,000 bytes.
std::string documentOf(std::size_t client) {
    return document(client * client, static_cast<char>('a' + client % 26));
}

std::string nameOf(std::size_t client) {
    return "document " + std::to_string(client);
}

} // namespace

/// All are connected at once, and none is done before the others have begun.
TEST_F(Relay, ServesFiveHundredClientsAtOnce) {
    const auto forEach = [](const auto& act) {
        for (std::size_t i = 0; i < count; ++i)
            act(i);
    };
    RelayServer server = serve("600");
    std::vector<std::unique_ptr<Peer>> peers(count);
    forEach([&](std::size_t i) { peers[i] = std::make_unique<Peer>(server); });
    forEach([&](std::size_t i) { peers[i]->send(putRequest(nameOf(i), documentOf(i))); });
    forEach([&](std::size_t i) { ASSERT_EQ(peers[i]->receive(goAhead.size()), goAhead); });
    forEach([&](std::size_t i) { peers[i]->send(documentOf(i).substr(0, 40)); });
    forEach([&](std::size_t i) { ASSERT_TRUE(peers[i]->send(documentOf(i).substr(40))); });
    forEach([&](std::size_t i) { ASSERT_EQ(peers[i]->receive(kept.size()), kept); });
    forEach([&](std::size_t i) { peers[i] = std::make_unique<Peer>(server); });
    forEach([&](std::size_t i) { peers[i]->send(request("get", nameOf(i), "0")); });
    forEach([&](std::size_t i) {
        const std::string content = documentOf(i);
        const std::string size = std::to_string(content.size());
        const std::string answer =
            std::string("\0\2ok\0", 5) + static_cast<char>(size.size()) + size + content;
        ASSERT_TRUE(peers[i]->receive(answer.size()) == answer) << i;
    });
    EXPECT_EQ(server.end(SIGTERM), 128 + SIGTERM);
    EXPECT_EQ(keptFiles().size(), count);
}
