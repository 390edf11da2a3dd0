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

std::string resolverError(int number) {
    return number == 0 ? "" : std::string("1: ") + gai_strerror(number);
}

/// For a fresh process: what it finds out where the variables exist and its sockets fail so.
[[noreturn]] void endWithReport(bool only4, bool only6, int error4, int error6) {
    only4 ? setenv("ZE_IPV4_ONLY", "", 1) : unsetenv("ZE_IPV4_ONLY");
    only6 ? setenv("ZE_IPV6_ONLY", "", 1) : unsetenv("ZE_IPV6_ONLY");
    const SystemFaults faults(SystemFaults::onSocket, {{error4}, {error6}});
    zeTCP::initialize();
    setenv("ZE_IPV6_ONLY", "", 1); // too late
    std::fputs(zeTCP::hasIPv4() ? "IPv4" : "none", stderr);
    if (!zeTCP::hasIPv4())
        std::fputs(text(zeTCP::ClientSocket(Address("10.0.0.1:1")).connect()).c_str(), stderr);
    std::fputs(zeTCP::hasIPv6() ? "IPv6" : text(zeTCP::Server(-1, 5).listen()).c_str(), stderr);
    _exit(0);
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
        const SystemFaults faults(c.call, std::vector<SystemFaults::Answer>(9, {c.answer}));
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
    const struct {
        bool only4, only6;
        int error4, error6;
        const char* report;
    } cases[] = {
        {false, false, EAFNOSUPPORT, EAFNOSUPPORT,
         "none2: connect.. failed: No useable protocol families found."
         "2: listen.. failed: No useable protocol families found."},
        {false, true, 0, EAFNOSUPPORT, "IPv4$"},
        {true, false, 0, 0, "IPv4$"},
        {true, false, EAFNOSUPPORT, 0, "none2: connect.*IPv6"},
        {true, true, 0, 0, "none2: connect.*IPv6"},
        {false, false, 0, 0, "IPv4IPv6"},
    };
    const bool hasIPv6 = zeUtil::Descriptor(zeTCP::makeSocket(AF_INET6)).isOpen();
    for (const auto& c : cases)
        if (hasIPv6 || c.error6 != 0) {
            EXPECT_EXIT(endWithReport(c.only4, c.only6, c.error4, c.error6),
                        testing::ExitedWithCode(0), c.report);
        }
}
