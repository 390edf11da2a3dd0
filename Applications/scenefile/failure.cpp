// SPDX-License-Identifier: MIT

#include "failure.h"

#include <system_error>

namespace scenefile {

std::string systemMessage(int error) {
    return std::generic_category().message(error);
}

} // namespace scenefile
