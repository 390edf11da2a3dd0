// SPDX-License-Identifier: MIT

#include "Base/zeBaseExport.h"

int zeBase_version() noexcept {
    return ZEBASE_VERSION;
}
