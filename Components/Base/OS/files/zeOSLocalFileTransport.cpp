// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSLocalFileTransport.h"

#include "Base/OS/files/zeOSLocalFileTransportImpl.h"
#include "Base/OS/files/zeOSLocalPathImpl.h"

namespace zeOS {

FileTransport* LocalFileTransportFactory::create(const zeString::IString& name) {
    return new LocalFileTransport(LocalPath(name).text());
}

int LocalFileTransportFactory::s_forceTransportLoad() {
    return 1;
}

} // namespace zeOS
