// SPDX-License-Identifier: MIT

/// @file
/// The address of a TCP peer: zeTCP::Address, a host and a port as text.
///
/// The host is a name or a number, whichever was given; the other is looked up when it is asked
/// for. What counts as a number is what `inet_addr` takes: dotted IPv4 in all its historic forms,
/// so that "10" and "0x7f.1" are numbers too. Everything else is a name, also "::1" and
/// "255.255.255.255". No constructor asks the name service.
///
/// **IPv4 and IPv6.** The first Address or Socket of the process finds out by initialize() for
/// which of the two the system makes sockets at all, and that stays so. If the environment variable
/// ZE_IPV6_ONLY exists then, with any value, IPv4 is not used, provided that there is IPv6; else if
/// ZE_IPV4_ONLY exists, IPv6 is not used, provided that there is IPv4.
///
/// Threads: an Address belongs to one thread at a time, as its const lookups fill caches too; the
/// other functions may be called by any thread.
///
/// @code
/// const zeTCP::Address number("10.0.0.1:80");
/// assert(number.port() == 80 && number.getNumbersAndDots().text == L"10.0.0.1");
/// const zeTCP::Address literal("::1"); // more than one colon: all of it is the host
/// assert(!literal.hasAssignedPort() && literal.getName().text == L"::1");
/// assert(zeTCP::Address(zeTCP::Address::localhost, 80).isLocalhost());
/// @endcode

#pragma once

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

struct addrinfo;

namespace zeTCP {

/// A text that was looked up.
struct TextResult {
    zeString::IString text; ///< What is known, possibly empty, also on an error.
    zeUtil::Error error;    ///< Code 1: the lookup failed. The message is the resolver's.
};

/// A host and a port. A plain value: copies are independent, with what was looked up so far.
class ZEBASE_API Address {
public:
    static const zeString::IString localhost;   ///< "127.0.0.1".
    static const zeString::IString localhostV6; ///< "::1".

    /// parse(host, port).
    Address(const zeString::IString& host, int port);

    /// From "host:port" if `text` has exactly one colon, with the port as `strtol` reads it: 0
    /// where there are no digits, and reduced modulo 2^32. Any other text is all host, with no
    /// port. Throws an Error of code 2 if `text` or the part before the colon is empty.
    explicit Address(const zeString::IString& text);

    /// Becomes the address of `host` and `port` (-1 for none), without what was looked up before.
    /// Throws an Error of code 2 if `host` is empty. The port is not checked.
    void parse(const zeString::IString& host, int port);

    /// Equal ports, and equal numbers if both have one, else equal names. Nothing is looked up: a
    /// host known by name differs from the same one known by number.
    bool operator==(const Address& other) const;

    /// The port; -1 if none is assigned.
    int port() const { return port_; }

    /// Whether port() is not -1. Port 0 is assigned.
    bool hasAssignedPort() const { return port_ != -1; }

    /// Whether the host was given as exactly "127.0.0.1". The name "localhost" is not, nor is
    /// "::1".
    bool isLocalhost() const { return isLocalhost_; }

    /// The name of this host, as `gethostname` gave it to the first call.
    static const zeString::IString& localhostName();

    /// Looks up the address of a name, and stores both texts unless that fails. getNumbersAndDots()
    /// will look up again. Once the number is known, given or found by getNumbersAndDots(), it
    /// always fails with code 1, as getName() does for a number. May block as the name service
    /// does.
    zeUtil::Error resolve();

    /// The number, looked up at the first call for a name. A lookup goes there and back, so that
    /// the text is a name again wherever the system has one for the address ("localhost" stays
    /// "localhost"): use getAddrInfo() for numbers to rely on. IPv4 only. May block as the name
    /// service does.
    TextResult getNumbersAndDots() const;

    /// The name. Of an address given as a number it is not found out: the text is empty, the error
    /// of code 1, and each call asks the resolver again.
    TextResult getName() const;

    /// The system's stream addresses of this host and port, of IPv4 and IPv6; to bind to, if
    /// `passive`. The caller frees them with `freeaddrinfo`. Null if there are none; the reason is
    /// lost, as `errno` need not say it. May block as the name service does.
    [[nodiscard]] addrinfo* getAddrInfo(bool passive) const;

private:
    /// The number if there is one, else the name.
    ZEBASE_HIDDEN const zeString::IString& host() const;

    mutable bool numericKnown_ = false; ///< numeric_ holds a number.
    mutable bool nameKnown_ = false;    ///< name_ holds a name.
    bool isLocalhost_ = false;
    mutable zeString::IString numeric_;
    mutable zeString::IString name_;
    int port_ = -1;
};

/// Finds out which protocols this process can use, when called first; the result is fixed then.
/// Every Address and Socket does this.
ZEBASE_API void initialize();

/// Whether IPv4 can be used.
ZEBASE_API bool hasIPv4();

/// Whether IPv6 can be used. Says nothing of the network: a host whose "::1" is not reachable may
/// still make such sockets.
ZEBASE_API bool hasIPv6();

} // namespace zeTCP
