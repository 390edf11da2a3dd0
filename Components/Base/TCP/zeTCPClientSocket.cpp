// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPClientSocket.h"

#include <netdb.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <vector>

#include "Base/OS/zeOSError.h"
#include "Base/TCP/zeTCPAddress.h"
#include "Base/TCP/zeTCPDescriptor.h"
#include "Base/TCP/zeTCPSocketImpl.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace zeTCP {
namespace {

/// What connect() tries, in order.
std::vector<Address> candidates(const Address& address) {
    std::vector<Address> found;
    if (hasIPv4())
        found.push_back(address);
    if (address.isLocalhost() && hasIPv6())
        found.emplace_back(Address::localhostV6, address.port());
    return found;
}

/// A socket that is connected to `entry`, or none. `error` takes the failure of the connection, and
/// stays as it is where there was no socket to connect.
zeUtil::Descriptor connectTo(const addrinfo& entry, zeUtil::Error& error) {
    zeUtil::Descriptor fd(
        ::socket(entry.ai_family, entry.ai_socktype | SOCK_CLOEXEC, entry.ai_protocol));
    if (!fd.isOpen())
        return fd;
    if (setLinger(fd.get()) != 0) {
        error = {2, "Could not set LINGER socket option: %S", zeOS::getLastError().asWChar()};
        return {};
    }
    if (::connect(fd.get(), entry.ai_addr, entry.ai_addrlen) != 0) {
        error = ClientSocket::getConnectError();
        std::printf("Connection failed: %s\n", error.message());
        return {};
    }
    return fd;
}

} // namespace

ClientSocket::ClientSocket(const Address& address) {
    impl().remoteAddress = std::make_unique<Address>(address);
}

zeUtil::Error ClientSocket::connect() {
    const std::vector<Address> addresses = candidates(*impl().remoteAddress);
    if (addresses.empty())
        return {2, "connect() failed: No useable protocol families found."};
    zeUtil::Error error;
    for (const Address& address : addresses) {
        const std::unique_ptr<addrinfo, void (*)(addrinfo*)> list(address.getAddrInfo(false),
                                                                  freeaddrinfo);
        if (!list && &address == &addresses.back())
            return {2, "getaddrinfo failed: %S", zeOS::getLastError().asWChar()};
        for (const addrinfo* entry = list.get(); entry; entry = entry->ai_next)
            if (zeUtil::Descriptor fd = connectTo(*entry, error); fd.isOpen()) {
                impl().fd = fd.release();
                return error; // of the entries before, if any: callers look at the descriptor
            }
    }
    if (error.code() == 0)
        error = {2, "connect() failed: %S", zeOS::getLastError().asWChar()};
    return error;
}

zeUtil::Error ClientSocket::getConnectError() {
    const int reason = errno;
    const int code = reason == ENETUNREACH ? 4 : reason == ECONNREFUSED ? 3 : 2;
    return {code, "connect() failed: %S", zeOS::errorText(reason).asWChar()};
}

} // namespace zeTCP
