// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPAddress.h"

#include <netdb.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/TCP/zeTCPDescriptor.h"
#include "Base/Utility/zeUtilDescriptor.h"
#include "Support/SystemFaults.h"

#include "TCP/Connection.h"

using zeString::IString;
using zeTCP::Address;

namespace {

using Answers = std::vector<SystemFaults::Answer>;

std::string resolverError(int number) {
    return number == 0 ? "" : std::string("1: ") + gai_strerror(number);
}

/// For a fresh process: what it finds out where `variables` exist and its sockets meet `answers`.
[[noreturn]] void endWithProtocols(const std::vector<const char*>& variables,
                                   const Answers& answers) {
    unsetenv("ZE_IPV4_ONLY");
    unsetenv("ZE_IPV6_ONLY");
    for (const char* variable : variables)
        setenv(variable, "", 1);
    const SystemFaults faults(SystemFaults::onSocket, answers);
    zeTCP::initialize();
    setenv("ZE_IPV6_ONLY", "", 1); // too late
    const int found = (zeTCP::hasIPv4() ? 4 : 0) + (zeTCP::hasIPv6() ? 6 : 0);
    if (!zeTCP::hasIPv4())
        std::fputs(text(zeTCP::ClientSocket(Address("10.0.0.1:1")).connect()).c_str(), stderr);
    if (found == 0)
        std::fputs(text(zeTCP::Server(-1, 5).listen()).c_str(), stderr);
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
        {L"::1", false, L"::1", -1},
        {L"255.255.255.255", false, L"255.255.255.255", -1},
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
        EXPECT_TRUE(address == Address(c.host, c.port) && !(address == Address(c.host, 5)));
    }
    EXPECT_TRUE(Address("127.0.0.1:1").isLocalhost());
    EXPECT_FALSE(Address("localhost:1").isLocalhost());
    EXPECT_FALSE(Address("localhost:1") == Address("127.0.0.1:1"));
    EXPECT_EQ(Address("127.0.0.1", -5).getAddrInfo(true), nullptr);
    addrinfo* const list = Address("127.0.0.1").getAddrInfo(true);
    EXPECT_TRUE(list && list->ai_socktype == SOCK_STREAM);
    freeaddrinfo(list);
    char name[256] = "";
    gethostname(name, sizeof name);
    EXPECT_STREQ(Address::localhostName().asMultibyte(), name);
}

TEST(Address, RefusesEmptyHosts) {
    for (const char* given : {"", ":80"})
        try {
            const Address address(given);
            FAIL() << given;
        } catch (const zeUtil::Error& error) {
            EXPECT_EQ(text(error), std::string("2: zeTCP::Address: empty address ") +
                                       (*given ? "specified" : "or incorectly formed address"));
        }
}

// The name of a number is not found out: the lookup of an empty text fails each time.
TEST(Address, LooksNoNumberUp) {
    const SystemFaults calls(SystemFaults::onGetaddrinfo, Answers());
    Address address("10.0.0.1:80");
    EXPECT_EQ(text(address.getNumbersAndDots().error), "");
    EXPECT_EQ(calls.calls(), 0u);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(text(address.getName().error), resolverError(EAI_NONAME));
    EXPECT_EQ(text(address.resolve()), resolverError(EAI_NONAME));
    EXPECT_EQ(calls.calls(), 3u);
    EXPECT_TRUE(address.getNumbersAndDots().text == L"10.0.0.1");
}

TEST(Address, KeepsWhatALookupFound) {
    const struct {
        SystemFaults::Call call;
        int answer, error;
    } cases[] = {
        {SystemFaults::onGetaddrinfo, EAI_AGAIN, EAI_AGAIN},
        {SystemFaults::onGetnameinfo, EAI_NONAME, EAI_NONAME},
        {SystemFaults::onGetnameinfo, EAI_AGAIN, 0}, // any other failure: the empty text is it
    };
    for (const auto& c : cases) {
        Address address("255.255.255.255:1"); // a name that needs no network
        const SystemFaults faults(c.call, Answers(4, {c.answer}));
        EXPECT_EQ(text(address.resolve()), resolverError(c.error));
        for (int i = 0; i < 2; ++i) // which asks again
            EXPECT_EQ(text(address.getNumbersAndDots().error), resolverError(c.error));
        EXPECT_EQ(faults.calls(), c.error ? 3u : 2u);
        EXPECT_TRUE(address.getNumbersAndDots().text.isEmpty());
        EXPECT_TRUE(address == Address("255.255.255.255:1")); // by name
        address.parse(L"10.0.0.1", 2);                        // forgets the name
        EXPECT_TRUE(address.getName().text.isEmpty());
    }
}

TEST(AddressDeathTest, FindsOutOnceWhichProtocolsThereAre) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // each in a fresh process
    const SystemFaults::Answer none = {EAFNOSUPPORT}, some = {};
    const char* const unusable = "connect\\(\\) failed: No useable protocol families found.";
    const struct {
        std::vector<const char*> variables;
        Answers answers;
        int found;
        const char* message;
    } cases[] = {
        {{}, {none, none}, 0, "found.2: listen\\(\\) failed: No useable protocol families"},
        {{"ZE_IPV6_ONLY"}, {some, none}, 4, ""},
        {{"ZE_IPV4_ONLY"}, {some, some}, 4, ""},
        {{"ZE_IPV4_ONLY"}, {none, some}, 6, unusable},
        {{"ZE_IPV6_ONLY"}, {some, some}, 6, unusable},
        {{"ZE_IPV4_ONLY", "ZE_IPV6_ONLY"}, {some, some}, 6, unusable},
        {{}, {some, some}, 10, ""},
    };
    const bool hasIPv6 = zeUtil::Descriptor(zeTCP::makeSocket(AF_INET6)).isOpen();
    for (const auto& c : cases)
        if (c.found < 6 || hasIPv6) {
            EXPECT_EXIT(endWithProtocols(c.variables, c.answers), testing::ExitedWithCode(c.found),
                        c.message);
        }
}
