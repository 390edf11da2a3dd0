// SPDX-License-Identifier: MIT

/// @file
/// The factory of local files, which serves every name that no registered factory claims.
///
/// Applications need it only to make a local transport without asking registered factories.
///
/// Threads: any thread may call it.
///
/// @code
/// #include "Base/OS/zeOSFileTransport.h"
/// zeOS::LocalFileTransportFactory factory;
/// zeOS::FileTransport* transport = factory.create("file:");
/// assert(transport->getFullName() == L"/");
/// delete transport;
/// @endcode

#pragma once

#include "Base/OS/zeOSFileFactory.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// Makes transports of local files; zeOSFile.h describes what these do.
class ZEBASE_API LocalFileTransportFactory : public FileTransportFactory {
public:
    /// Never null. The name is the path as it stands, or, after "file:", the rest of it without
    /// separators at its end and with one before it: "file:/a/b" gives "//a/b". Any other scheme
    /// is part of the path.
    FileTransport* create(const zeString::IString& name) override;

    /// Returns 1. The call keeps local files linked in.
    static int s_forceTransportLoad();
};

} // namespace zeOS
