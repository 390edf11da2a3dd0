// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadMessage.h"

#include <memory>
#include <utility>

#include "Base/Utility/zeRTBAsyncSignal.h"

namespace zeThread {

Message::~Message() = default;

AsyncSignalMessage::AsyncSignalMessage(zeRTB::AsyncSignal* signal) : signal_(signal) {}

AsyncSignalMessage::~AsyncSignalMessage() {
    delete signal_;
}

void AsyncSignalMessage::dispatch() {
    const std::unique_ptr<zeRTB::AsyncSignal> signal(std::exchange(signal_, nullptr));
    if (signal)
        signal->send();
}

} // namespace zeThread
