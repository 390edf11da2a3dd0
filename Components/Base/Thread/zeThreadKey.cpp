// SPDX-License-Identifier: MIT

#include "Base/Thread/zeThreadKey.h"

#include <pthread.h>

#include <limits>

namespace zeThread {

unsigned int createThreadKey() {
    pthread_key_t key = std::numeric_limits<pthread_key_t>::max(); // which no key is
    pthread_key_create(&key, nullptr);
    return key;
}

void freeThreadKey(unsigned int key) {
    pthread_key_delete(key);
}

void* getThreadSpecificValue(unsigned int key) {
    return pthread_getspecific(key);
}

void setThreadSpecificValue(unsigned int key, void* value) {
    pthread_setspecific(key, value);
}

} // namespace zeThread
