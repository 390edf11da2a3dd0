// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPServer.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <vector>

#include "Base/OS/zeOSError.h"
#include "Base/TCP/zeTCPAddress.h"
#include "Base/TCP/zeTCPDescriptor.h"
#include "Base/TCP/zeTCPDescriptorSetImpl.h"
#include "Base/TCP/zeTCPServerSocket.h"
#include "Base/TCP/zeTCPSocketImpl.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/Utility/zeUtilDescriptor.h"
#include "Base/Utility/zeUtilInterval.h"

namespace zeTCP {

class ServerImpl : public ze::ImplBase {
public:
    ServerImpl(int wantedPort, int pending) : port(wantedPort), backlog(pending) {}

    int port;
    int backlog;
    std::unique_ptr<ListeningSocket> socket4;
    std::unique_ptr<ListeningSocket> socket6;
    std::vector<int> fds; ///< Of all that ever listened: shutdown() and listen() remove none.
    bool loopbackOnly = false;

    /// Sockets on their way to `socket4` and `socket6`. One that could not be bound stays here,
    /// open and unused, until the next listen().
    zeUtil::Descriptor fd4, fd6;
    bool portWanted = false; ///< Any free port will do, and it is not chosen yet.

    /// False where IPv4 is not to be tried any more.
    bool listenIpv6(zeUtil::Error& e);
    void listenIpv4(zeUtil::Error& e);

private:
    zeUtil::Error startListening(zeUtil::Descriptor& fd, std::unique_ptr<ListeningSocket>& socket);
    std::uint16_t portInNetworkOrder() const { return htons(static_cast<std::uint16_t>(port)); }
};

namespace {

zeUtil::Error systemError() {
    return {1, zeOS::getLastError()};
}

template<class SocketAddress>
int bindTo(int fd, const SocketAddress& address) {
    return ::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

bool hasDescriptor(const std::unique_ptr<ListeningSocket>& socket) {
    return socket && socket->descriptor() >= 0;
}

} // namespace

bool ServerImpl::listenIpv6(zeUtil::Error& e) {
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_port = portInNetworkOrder();
    address.sin6_addr = loopbackOnly ? in6addr_loopback : in6addr_any;
    // No option is set, not even IPV6_V6ONLY: on a usual Linux this socket takes IPv4 as well.
    e = Server::isBindError(bindTo(fd6.get(), address));
    if (e.code() != 0)
        return true;
    e = startListening(fd6, socket6);
    if (e.code() != 0)
        return false;
    socklen_t size = sizeof address;
    auto* const found = reinterpret_cast<sockaddr*>(&address);
    if (::getsockname(socket6->descriptor(), found, &size) != 0) {
        e = {1, "Cannot get listening socket address:%S", zeOS::getLastError().asWChar()};
        return false;
    }
    port = ntohs(address.sin6_port);
    portWanted = false;
    return true;
}

void ServerImpl::listenIpv4(zeUtil::Error& e) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = portInNetworkOrder();
    address.sin_addr.s_addr = htonl(loopbackOnly ? INADDR_LOOPBACK : INADDR_ANY);
    e = Server::isBindError(bindTo(fd4.get(), address)); // that of IPv6 is forgotten
    if (e.code() != 0)
        return;
    e = startListening(fd4, socket4);
    if (!portWanted)
        return;
    const AddressResult local = socket4->localAddress();
    if (local.address)
        port = local.address->port();
    else
        e = {1, "Cannot get listening socket address: %s", local.error.message()};
}

/// Makes `fd`, which is bound, listen as `socket`.
zeUtil::Error ServerImpl::startListening(zeUtil::Descriptor& fd,
                                         std::unique_ptr<ListeningSocket>& socket) {
    fds.push_back(fd.get());
    socket = std::make_unique<ListeningSocket>(fd.get());
    return ::listen(fd.release(), backlog) == 0 ? zeUtil::Error() : systemError();
}

Server::Server(int port, int backlog) : impl_(new ServerImpl(port, backlog)), ownsImpl_(true) {}

Server::~Server() {
    impl_->socket4.reset();
    impl_->socket6.reset();
    if (ownsImpl_)
        delete impl_;
    impl_ = nullptr;
}

int Server::getPort() const {
    return impl_->port;
}

void Server::setLoopbackOnly() {
    impl_->loopbackOnly = true;
}

zeUtil::Error Server::listen() {
    zeUtil::Error e;
    impl_->fd4.close();
    impl_->fd6.close();
    impl_->socket4 = std::make_unique<ListeningSocket>(-1);
    impl_->socket6 = std::make_unique<ListeningSocket>(-1);
    listenIpv6And4(e);
    return e;
}

void Server::listenIpv6And4(zeUtil::Error& e) {
    if (hasIPv4())
        impl_->fd4 = zeUtil::Descriptor(makeSocket(AF_INET));
    if (hasIPv6())
        impl_->fd6 = zeUtil::Descriptor(makeSocket(AF_INET6));
    if (!impl_->fd4.isOpen() && !impl_->fd6.isOpen()) {
        e = {2, "listen() failed: No useable protocol families found."};
        return;
    }
    impl_->portWanted = impl_->port == -1;
    if (impl_->portWanted)
        impl_->port = 0;
    // IPv6 first: the port that it gets is then the one for IPv4 as well.
    if (impl_->fd6.isOpen() && !impl_->listenIpv6(e))
        return;
    if (impl_->fd4.isOpen())
        impl_->listenIpv4(e);
}

bool Server::isListening() const {
    return hasDescriptor(impl_->socket4) || hasDescriptor(impl_->socket6);
}

zeUtil::Error Server::isBindError(int rc) {
    if (rc == 0)
        return {};
    const int reason = errno;
    return {reason == EADDRINUSE ? 3 : 1, "bind() failed: %S", zeOS::errorText(reason).asWChar()};
}

bool Server::connectionPending() const {
    return hasDescriptor(impl_->socket4) && doSelect(impl_->fds, zeUtil::Interval()) > 0;
}

AcceptResult Server::accept(const zeUtil::Interval& timeout) {
    if (impl_->fds.empty())
        if (const zeUtil::Error e = listen(); e.code() != 0)
            return {nullptr, e};
    DescriptorSetImpl readable;
    for (const int fd : impl_->fds)
        readable.add(fd);
    const int result = readable.select(timeout);
    if (result < 0)
        return {nullptr, systemError()};
    if (result == 0)
        return {nullptr, {}};
    const auto listening = std::find_if(impl_->fds.begin(), impl_->fds.end(),
                                        [&](int fd) { return readable.contains(fd); });
    zeUtil::Descriptor fd(
        zeUtil::retried([&] { return ::accept4(*listening, nullptr, nullptr, SOCK_CLOEXEC); }));
    if (!fd.isOpen() || setLinger(fd.get()) != 0)
        return {nullptr, systemError()};
    auto* const socket = new ServerSocket(fd.get());
    static_cast<void>(fd.release()); // the socket's
    return {socket, {}};
}

zeUtil::Error Server::accept(Socket** socket, const zeUtil::Interval& timeout) {
    const AcceptResult result = accept(timeout);
    *socket = result.socket;
    return result.error;
}

void Server::shutdown() {
    impl_->socket4.reset();
}

SocketImpl* Server::getListeningSocketImplIPv4() const {
    return impl_->socket4 ? &impl_->socket4->impl() : nullptr;
}

SocketImpl* Server::getListeningSocketImplIPv6() const {
    return impl_->socket6 ? &impl_->socket6->impl() : nullptr;
}

} // namespace zeTCP
