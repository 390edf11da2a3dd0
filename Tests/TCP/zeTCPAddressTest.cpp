// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPAddress.h"

#include <netdb.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/TCP/zeTCPClientSocket.h"
#include "Support/SystemFaults.h"

#include "TCP/Connection.h"

using zeString::IString;
using zeTCP::Address;

namespace {

using Answers = std::vector<SystemFaults::Answer>;

std::string thrownBy(const std::function<void()>& call) {
    try {
        call();
    } catch (const zeUtil::Error& error) {
        return text(error);
    }
    return "nothing";
}

/// For a fresh process: what it finds out when `variables` exist and its sockets meet `answers`.
[[noreturn]] void endWithProtocols(const std::vector<const char*>& variables,
                                   const Answers& answers) {
    for (const char* variable : {"ZE_IPV4_ONLY", "ZE_IPV6_ONLY"})
        unsetenv(variable);
    for (const char* variable : variables)
        setenv(variable, "", 1);
    const SystemFaults faults(SystemFaults::onSocket, answers);
    zeTCP::initialize();
    setenv("ZE_IPV6_ONLY", "", 1); // too late
    const int found = (zeTCP::hasIPv4() ? 4 : 0) + (zeTCP::hasIPv6() ? 6 : 0);
    zeTCP::ClientSocket client(Address("10.0.0.1:1"));
    if (!zeTCP::hasIPv4())
        std::fprintf(stderr, "%s\n", text(client.connect()).c_str());
    if (found == 0)
        std::fprintf(stderr, "%s\n", text(zeTCP::Server(-1, 5).listen()).c_str());
    _exit(found);
}

} // namespace

TEST(Address, TellsNumbersFromNames) {
    const struct {
        const wchar_t* given;
        bool isNumber;
        const wchar_t* host;
        int port;
    } cases[] = {
        {L"example:80", false, L"example", 80},
        {L"10.0.0.1:80", true, L"10.0.0.1", 80},
        {L"10:-1", true, L"10", -1},
        {L"0x7f.1:4294967376x", true, L"0x7f.1", 80}, // modulo 2^32
        {L"127.0.0.1 x", true, L"127.0.0.1 x", -1},
        {L"host:", false, L"host", 0},
        {L"host: 7", false, L"host", 7},
        {L"::1", false, L"::1", -1},
        {L"255.255.255.255", false, L"255.255.255.255", -1},
        {L"gr\u00FCn:x", false, L"gr\u00FCn", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(IString(c.given).asUTF8());
        const Address address{IString(c.given)};
        const auto [known, error] = c.isNumber ? address.getNumbersAndDots() : address.getName();
        EXPECT_EQ(text(error), "");
        EXPECT_TRUE(known == c.host);
        EXPECT_EQ(address.port(), c.port);
        EXPECT_EQ(address.hasAssignedPort(), c.port != -1);
        EXPECT_FALSE(address.isLocalhost());
        EXPECT_TRUE(address == Address(c.host, c.port));
        EXPECT_FALSE(address == Address(c.host, 5));
    }
    EXPECT_TRUE(Address("127.0.0.1:1").isLocalhost());
    EXPECT_FALSE(Address("localhost:1").isLocalhost());
    EXPECT_FALSE(Address("localhost:1") == Address("127.0.0.1:1"));
    char name[256] = "";
    gethostname(name, sizeof name);
    EXPECT_STREQ(Address::localhostName().asMultibyte(), name);
}

TEST(Address, RefusesEmptyHosts) {
    EXPECT_EQ(thrownBy([] { Address{IString()}; }),
              "2: zeTCP::Address: empty address or incorectly formed address");
    EXPECT_EQ(thrownBy([] { Address(":80"); }), "2: zeTCP::Address: empty address specified");
    EXPECT_EQ(thrownBy([] { Address(IString(), 1); }),
              "2: zeTCP::Address: empty address specified");
}

// The name of a number is not found out: the lookup of an empty text fails each time.
TEST(Address, LooksNoNumberUp) {
    const SystemFaults calls(SystemFaults::onGetaddrinfo, Answers());
    Address address("10.0.0.1:80");
    EXPECT_EQ(text(address.getNumbersAndDots().error), "");
    EXPECT_EQ(calls.calls(), 0u);
    const std::string failure = std::string("1: ") + gai_strerror(EAI_NONAME);
    for (std::size_t n = 1; n <= 2; ++n) {
        EXPECT_EQ(text(address.getName().error), failure);
        EXPECT_TRUE(address.getName().text.isEmpty());
        EXPECT_EQ(text(address.resolve()), failure);
        EXPECT_EQ(calls.calls(), 3 * n);
    }
    EXPECT_TRUE(address.getNumbersAndDots().text == L"10.0.0.1");
}

TEST(Address, KeepsWhatALookupFound) {
    const struct {
        SystemFaults::Call call;
        int answer;
        int error; ///< The resolver's that comes back; 0 for a success.
    } cases[] = {
        {SystemFaults::onGetaddrinfo, EAI_AGAIN, EAI_AGAIN},
        {SystemFaults::onGetnameinfo, EAI_NONAME, EAI_NONAME},
        {SystemFaults::onGetnameinfo, EAI_AGAIN, 0}, // any other failure: the empty text is it
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(SystemFaults::name(c.call) + std::to_string(c.answer));
        Address address("255.255.255.255:1"); // a name that needs no network
        const SystemFaults faults(c.call, Answers(3, {c.answer}));
        const std::string expected =
            c.error ? std::string("1: ") + gai_strerror(c.error) : std::string();
        EXPECT_EQ(text(address.resolve()), expected);
        EXPECT_EQ(text(address.getNumbersAndDots().error), expected); // which asks again
        EXPECT_EQ(text(address.getNumbersAndDots().error), expected);
        EXPECT_EQ(faults.calls(), c.error ? 3u : 2u);
        EXPECT_TRUE(address.getName().text == L"255.255.255.255");
        address.parse(L"10.0.0.1", 2); // forgets the name
        EXPECT_TRUE(address.getName().text.isEmpty());
    }
}

TEST(Address, GivesTheSystemsAddresses) {
    for (const char* given : {"127.0.0.1:80", "127.0.0.1"}) {
        const std::unique_ptr<addrinfo, void (*)(addrinfo*)> list(Address(given).getAddrInfo(false),
                                                                  freeaddrinfo);
        ASSERT_TRUE(list);
        EXPECT_EQ(list->ai_socktype, SOCK_STREAM);
        const std::string port(given[9] == ':' ? "\0\x50" : "\0\0", 2);
        EXPECT_EQ(std::string(list->ai_addr->sa_data, 6), port + "\x7F" + std::string("\0\0\1", 3));
    }
    EXPECT_EQ(Address("127.0.0.1", -5).getAddrInfo(true), nullptr);
}

TEST(AddressDeathTest, FindsOutOnceWhichProtocolsThereAre) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // each in a fresh process
    const SystemFaults::Answer none = {EAFNOSUPPORT};
    const SystemFaults::Answer some = {};
    const std::string unusable = "2: connect\\(\\) failed: No useable protocol families found.";
    const std::string neither = unusable + "\n2: listen\\(\\) failed: No useable protocol families";
    const struct {
        std::vector<const char*> variables;
        Answers answers;
        int found;
        std::string message;
    } cases[] = {
        {{}, {none, none}, 0, neither},
        {{"ZE_IPV6_ONLY"}, {some, none}, 4, ""},
        {{"ZE_IPV4_ONLY"}, {some, none}, 4, ""},
        {{"ZE_IPV4_ONLY"}, {some, some}, 4, ""},
        {{}, {none, some}, 6, unusable},
        {{"ZE_IPV4_ONLY"}, {none, some}, 6, unusable},
        {{"ZE_IPV6_ONLY"}, {some, some}, 6, unusable},
        {{"ZE_IPV4_ONLY", "ZE_IPV6_ONLY"}, {some, some}, 6, unusable},
        {{}, {some, some}, 10, ""},
    };
    const bool hasIPv6 = zeUtil::Descriptor(::socket(AF_INET6, SOCK_STREAM, 0)).isOpen();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.found);
        if (c.found >= 6 && !hasIPv6)
            continue;
        EXPECT_EXIT(endWithProtocols(c.variables, c.answers), testing::ExitedWithCode(c.found),
                    c.message);
    }
}
