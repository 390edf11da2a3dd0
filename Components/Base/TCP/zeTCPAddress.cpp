// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPAddress.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "Base/TCP/zeTCPDescriptor.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace zeTCP {

using zeString::IString;

namespace {

struct FreeAddrInfo {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
};
using AddrInfoList = std::unique_ptr<addrinfo, FreeAddrInfo>;

zeUtil::Error resolverError(int number) {
    return {1, IString(gai_strerror(number))};
}

/// The flags of a lookup: for getaddrinfo, and for getnameinfo.
struct LookupFlags {
    int info;
    int name;
};
/// Without NI_NUMERICHOST: the answer is a name wherever the system has one, which callers see.
constexpr LookupFlags nameToAddress = {0, NI_NUMERICSERV};
constexpr LookupFlags addressToName = {AI_NUMERICHOST, 0};

/// Looks `in` up as IPv4, and each address that comes back in turn. `out` takes the first text.
zeUtil::Error lookUp(const IString& in, IString& out, LookupFlags flags) {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags.info;
    addrinfo* found = nullptr;
    if (const int failure = getaddrinfo(in.asUTF8(), nullptr, &hints, &found))
        return resolverError(failure);
    const AddrInfoList list(found);
    for (const addrinfo* entry = list.get(); entry; entry = entry->ai_next) {
        char host[NI_MAXHOST] = ""; // kept as it is if getnameinfo fails in any other way
        if (getnameinfo(entry->ai_addr, entry->ai_addrlen, host, sizeof host, nullptr, 0,
                        flags.name) == EAI_NONAME)
            continue;
        out = IString(host);
        return {};
    }
    return resolverError(EAI_NONAME);
}

enum Protocol : unsigned { protocolIPv4 = 1, protocolIPv6 = 2 };

unsigned probe() {
    const bool hasIPv4 = zeUtil::Descriptor(makeSocket(AF_INET)).isOpen();
    const bool hasIPv6 = zeUtil::Descriptor(makeSocket(AF_INET6)).isOpen();
    if (hasIPv6 && std::getenv("ZE_IPV6_ONLY"))
        return protocolIPv6;
    if (hasIPv4 && std::getenv("ZE_IPV4_ONLY"))
        return protocolIPv4;
    return (hasIPv4 ? protocolIPv4 : 0U) | (hasIPv6 ? protocolIPv6 : 0U);
}

/// What the first call finds out.
unsigned protocols() {
    static const unsigned mask = probe();
    return mask;
}

} // namespace

const IString Address::localhost(L"127.0.0.1");
const IString Address::localhostV6(L"::1");

Address::Address(const IString& host, int port) {
    parse(host, port);
}

Address::Address(const IString& text) {
    if (text.isEmpty())
        throw zeUtil::Error(2, "zeTCP::Address: empty address or incorectly formed address");
    const unsigned int colon = text.find(L':');
    if (colon == IString::npos || text.find(L':', colon + 1) != IString::npos) {
        parse(text, -1);
        return;
    }
    const IString digits = text.substr(colon + 1);
    parse(text.substr(0, colon), static_cast<int>(std::strtol(digits.asUTF8(), nullptr, 10)));
}

void Address::parse(const IString& host, int port) {
    port_ = port;
    isLocalhost_ = false;
    initialize();
    if (host.isEmpty())
        throw zeUtil::Error(2, "zeTCP::Address: empty address specified");
    numericKnown_ = inet_addr(host.asUTF8()) != INADDR_NONE;
    nameKnown_ = !numericKnown_;
    numeric_ = numericKnown_ ? host : IString();
    name_ = nameKnown_ ? host : IString();
    isLocalhost_ = host == localhost;
}

bool Address::operator==(const Address& other) const {
    if (port_ != other.port_)
        return false;
    return numericKnown_ && other.numericKnown_ ? numeric_ == other.numeric_ : name_ == other.name_;
}

const IString& Address::localhostName() {
    static const IString name = [] {
        char buffer[256 + 1] = ""; // one more than is offered: a name that is cut has no terminator
        static_cast<void>(gethostname(buffer, sizeof buffer - 1));
        return IString(buffer);
    }();
    return name;
}

zeUtil::Error Address::resolve() {
    // Where the number is known, the empty name goes in, though a name may be known as well: the
    // lookup fails, and callers get that error.
    IString name = numericKnown_ ? IString() : name_;
    IString numeric = numeric_;
    zeUtil::Error error = lookUp(name, numeric, numericKnown_ ? addressToName : nameToAddress);
    if (error.code() == 0) {
        name_ = name;
        numeric_ = numeric;
    }
    return error;
}

TextResult Address::getNumbersAndDots() const {
    zeUtil::Error error;
    if (!numericKnown_) {
        IString numeric;
        error = lookUp(name_, numeric, nameToAddress);
        if (error.code() == 0) {
            numericKnown_ = true;
            numeric_ = numeric;
        }
    }
    return {numeric_, error};
}

TextResult Address::getName() const {
    zeUtil::Error error;
    if (!nameKnown_) {
        // The empty name goes in, not the number: the lookup fails, and callers get that error.
        const IString name;
        IString numeric = numeric_;
        error = lookUp(name, numeric, addressToName);
        if (error.code() == 0) {
            nameKnown_ = true;
            name_ = name;
        }
    }
    return {name_, error};
}

addrinfo* Address::getAddrInfo(bool passive) const {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = passive ? AI_PASSIVE : 0;
    const IString& node = host();
    const std::string service = std::to_string(hasAssignedPort() ? port_ : 0);
    addrinfo* list = nullptr;
    if (getaddrinfo(node.isEmpty() ? nullptr : node.asUTF8(), service.c_str(), &hints, &list) != 0)
        return nullptr;
    return list;
}

const IString& Address::host() const {
    return numericKnown_ ? numeric_ : name_;
}

void initialize() {
    protocols();
}

bool hasIPv4() {
    return (protocols() & protocolIPv4) != 0;
}

bool hasIPv6() {
    return (protocols() & protocolIPv6) != 0;
}

} // namespace zeTCP
