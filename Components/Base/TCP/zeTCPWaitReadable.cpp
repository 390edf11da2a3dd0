// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPWaitReadable.h"

#include "Base/OS/zeOSError.h"
#include "Base/TCP/zeTCPDescriptorSetImpl.h"
#include "Base/TCP/zeTCPServer.h"
#include "Base/TCP/zeTCPSocket.h"
#include "Base/TCP/zeTCPSocketImpl.h"
#include "Base/Utility/zeReferenceCount.h"

namespace zeTCP {
namespace {

/// -1 where there is no socket.
int descriptorOf(const SocketImpl* socket) {
    return socket ? socket->fd : -1;
}

} // namespace

class WaitReadableImpl : public ze::ImplBase {
public:
    DescriptorSetImpl set;
};

WaitReadable::WaitReadable() : impl_(new WaitReadableImpl), ownsImpl_(true) {}

WaitReadable::~WaitReadable() {
    if (ownsImpl_)
        delete impl_;
    impl_ = nullptr;
}

void WaitReadable::add(const Socket& socket) {
    impl_->set.add(socket.descriptor());
}

void WaitReadable::add(const Server& server) {
    impl_->set.add(descriptorOf(server.getListeningSocketImplIPv4()));
    impl_->set.add(descriptorOf(server.getListeningSocketImplIPv6()));
}

void WaitReadable::reset() {
    impl_->set.clear();
}

bool WaitReadable::isReadable(const Socket& socket) const {
    return impl_->set.contains(socket.descriptor());
}

bool WaitReadable::isReadable(const Server& server) const {
    return impl_->set.contains(descriptorOf(server.getListeningSocketImplIPv4())) ||
           impl_->set.contains(descriptorOf(server.getListeningSocketImplIPv6()));
}

zeUtil::Error WaitReadable::wait(zeUtil::Interval timeout) {
    if (impl_->set.select(timeout) == 0)
        return {};
    return {1, zeOS::getLastError()}; // also where sockets are readable: callers ask isReadable()
}

zeUtil::Error waitReadable(const std::vector<Socket*>& in, std::vector<Socket*>& out,
                           zeUtil::Interval timeout) {
    DescriptorSetImpl set;
    for (const Socket* socket : in)
        set.add(socket->descriptor());
    if (set.select(timeout) < 0)
        return {1, "select() failed"};
    for (Socket* socket : in)
        if (set.contains(socket->descriptor()))
            out.push_back(socket);
    return {};
}

} // namespace zeTCP
