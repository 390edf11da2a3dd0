// SPDX-License-Identifier: MIT

#include "Base/TCP/zeTCPServerSocket.h"

#include "Base/TCP/zeTCPSocketImpl.h"

namespace zeTCP {

ServerSocket::ServerSocket(int fd) {
    impl().fd = fd;
    impl().connected = true;
}

ListeningSocket::ListeningSocket(int fd) {
    impl().fd = fd;
}

} // namespace zeTCP
