// SPDX-License-Identifier: MIT

#include "Base/Utility/zeRTBFunction.h"

namespace zeRTB {

FunctionBase::~FunctionBase() = default;

bool FunctionBase::isGlobalFunction(void*) {
    return false;
}

bool FunctionBase::isInstance(void*) {
    return false;
}

FunctionVoid::~FunctionVoid() = default;

FunctionVoidGlobal::~FunctionVoidGlobal() = default;

bool FunctionVoidGlobal::isGlobalFunction(void* function) {
    return function == reinterpret_cast<void*>(function_);
}

void FunctionVoidGlobal::call() {
    function_();
}

} // namespace zeRTB
