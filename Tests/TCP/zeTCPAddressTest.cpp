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
        const char *given, *host;
        int port;
        bool isNumber;
    } cases[] = {
        {"example:80", "example", 80, false},
        {"10.0.0.1:80", "10.0.0.1", 80, true},
        {"10:-1", "10", -1, true},
        {"0x7f.1:4294967376x", "0x7f.1", 80, true}, // modulo 2^32
        {"127.0.0.1 x", "127.0.0.1 x", -1, true},
        {"host:", "host", 0, false},
        {"::1", "::1", -1, false},
        {"255.255.255.255", "255.255.255.255", -1, false},
    };
    for (const auto& c : cases) {
        const Address address(c.given);
        const auto [known, error] = c.isNumber ? address.getNumbersAndDots() : address.getName();
        EXPECT_TRUE(error.code() == 0 && known == c.host) << c.given;
        EXPECT_EQ(address.port(), c.port) << c.given;
        EXPECT_EQ(address.hasAssignedPort(), c.port != -1) << c.given;
        EXPECT_TRUE(address == Address(c.host, c.port) && !(address == Address(c.host, 5)));
        EXPECT_FALSE(address.isLocalhost()) << c.given;
    }
    EXPECT_TRUE(Address("127.0.0.1:1").isLocalhost());
    EXPECT_FALSE(Address("localhost:1") == Address("127.0.0.1:1"));
    EXPECT_EQ(Address("127.0.0.1", -5).getAddrInfo(true), nullptr);
    addrinfo* const list = Address("127.0.0.1").getAddrInfo(true);
    EXPECT_TRUE(list && list->ai_socktype == SOCK_STREAM);
    freeaddrinfo(list);
    char name[256] = "";
    gethostname(name, sizeof name);
    EXPECT_STREQ(Address::localhostName().asMultibyte(), name);
    for (const char* given : {"", ":80"})
        try {
            const Address address(given);
            FAIL() << given;
        } catch (const zeUtil::Error& error) {
            EXPECT_EQ(text(error), std::string("2: zeTCP::Address: empty address ") +
                                       (*given ? "specified" : "or incorectly formed address"));
        }
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
        const SystemFaults faults(c.call, Answers(9, {c.answer}));
        EXPECT_EQ(text(address.resolve()), resolverError(c.error));
        for (int i = 0; i < 2; ++i) // which asks again
            EXPECT_EQ(text(address.getNumbersAndDots().error), resolverError(c.error));
        EXPECT_EQ(faults.calls(), c.error ? 3u : 2u);
        EXPECT_TRUE(address.getNumbersAndDots().text.isEmpty());
        // The number, known or not, is of no account where the other side has none.
        const Address same("255.255.255.255:1"), other("other:1");
        EXPECT_TRUE(address == same && same == address);
        EXPECT_FALSE(address == other || other == address);
        // Of a known number nothing is found out: the lookup of an empty text fails each time.
        EXPECT_EQ(text(address.resolve()), resolverError(c.error ? c.error : EAI_NONAME));
        address.parse("10.0.0.1", 2); // forgets the name
        for (int i = 0; i < 2; ++i)
            EXPECT_NE(text(address.getName().error), "");
        EXPECT_TRUE(address.getName().text.isEmpty());
        EXPECT_TRUE(address.getNumbersAndDots().text == "10.0.0.1");
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
