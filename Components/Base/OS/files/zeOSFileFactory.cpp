// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFileFactory.h"

#include <vector>

#include "Base/OS/files/zeOSFileFactoryImpl.h"
#include "Base/OS/zeOSLocalFileTransport.h"
#include "Base/Utility/zeUtilInitializer.h"

namespace zeOS {
namespace {

class FileFactoryImpl : public FileFactory {
public:
    FileFactoryImpl() : defaultFactory_(new LocalFileTransportFactory) {
        LocalFileTransportFactory::s_forceTransportLoad();
    }

    File* getFile(const zeString::IString& name) override {
        FileTransport* transport = getFileFactory()->getFileTransport(name);
        return transport ? new File(transport) : nullptr;
    }

    FileTransport* getFileTransport(const zeString::IString& name) override {
        for (FileTransportFactory* factory : factories_)
            if (FileTransport* transport = factory->create(name))
                return transport;
        return defaultFactory_ ? defaultFactory_->create(name) : nullptr;
    }

    void registerTransport(FileTransportFactory* factory) override {
        factories_.push_back(factory);
    }

    bool hasOnlyTheDefault() const { return factories_.empty(); }

private:
    std::vector<FileTransportFactory*> factories_;
    FileTransportFactory* defaultFactory_;
};

// Never destroyed: destructors of an application's statics may still use files.
FileFactoryImpl& theFactory() {
    static FileFactoryImpl& factory = *new FileFactoryImpl;
    return factory;
}

class FileFactoryInitializer : public zeUtil::Initializer {
public:
    zeUtil::Error initialize() override {
        FileFactory::getFileFactory();
        return zeUtil::Error();
    }
};

FileFactoryInitializer fileFactoryInitializer;

} // namespace

FileTransportFactory::~FileTransportFactory() = default;

FileFactory* FileFactory::getFileFactory() {
    return &theFactory();
}

FileFactory::~FileFactory() = default;

bool everyNameIsLocal() {
    return theFactory().hasOnlyTheDefault();
}

} // namespace zeOS
