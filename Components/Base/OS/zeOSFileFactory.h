// SPDX-License-Identifier: MIT

/// @file
/// Which storage a name belongs to.
///
/// Every zeOS::File asks the one FileFactory for its transport. Factories that the application
/// registered see each name first, in the order of their registration, whatever its scheme; what
/// all decline is a local path.
///
/// Nothing locks: registration belongs to start-up, before other threads ask.
///
/// @code
/// zeOS::FileFactory* factory = zeOS::FileFactory::getFileFactory();
/// zeOS::FileTransport* transport = factory->getFileTransport("file:/tmp");
/// assert(transport->getFullName() == L"//tmp" && transport->isDirectory());
/// delete transport;
/// @endcode

#pragma once

#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileTransport.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// Makes the transports of one kind of storage.
class ZEBASE_API FileTransportFactory {
public:
    virtual ~FileTransportFactory();

    /// A new transport, which the caller owns, or null if `name` is none of this storage's.
    virtual FileTransport* create(const zeString::IString& name) = 0;
};

/// Makes files by name. There is one, which lives as long as the process.
class ZEBASE_API FileFactory {
public:
    /// The one factory; made at the first call, by whichever thread.
    static FileFactory* getFileFactory();

    virtual ~FileFactory();

    /// A new File or transport, which the caller owns, or null if nobody serves the name. The local
    /// factory serves all.
    virtual File* getFile(const zeString::IString& name) = 0;
    virtual FileTransport* getFileTransport(const zeString::IString& name) = 0;

    /// Adds a factory behind those that are registered. It is not owned, and stays for the life of
    /// the process.
    virtual void registerTransport(FileTransportFactory* factory) = 0;
};

} // namespace zeOS
