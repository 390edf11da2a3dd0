// SPDX-License-Identifier: MIT

/// @file
/// Which storage a name belongs to.
///
/// Every zeOS::File asks the one FileFactory for its transport. Factories that the application
/// registered see each name first, in the order of their registration, whatever its scheme; what
/// all decline is a local path.
///
/// Threads: any thread may ask for files; registration takes no lock and belongs to start-up.
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
    /// Transports that it made stay valid.
    virtual ~FileTransportFactory();

    /// A new transport, which the caller owns, or null if this storage does not serve `name`.
    virtual FileTransport* create(const zeString::IString& name) = 0;
};

/// Makes files by name. There is one, which lives as long as the process.
class ZEBASE_API FileFactory {
public:
    /// The one factory; made at the first call, by whichever thread.
    static FileFactory* getFileFactory();

    /// Never called for the one factory.
    virtual ~FileFactory();

    /// A new File, which the caller owns, or null if no factory serves the name; the local one
    /// serves every name.
    virtual File* getFile(const zeString::IString& name) = 0;
    /// A new transport, which the caller owns, or null if no factory serves the name; the local one
    /// serves every name.
    virtual FileTransport* getFileTransport(const zeString::IString& name) = 0;

    /// Adds a factory, which is asked after those that are registered. It is not owned, and must
    /// live as long as the process.
    virtual void registerTransport(FileTransportFactory* factory) = 0;
};

} // namespace zeOS
