// SPDX-License-Identifier: MIT
// A library without any of the functions of a plug-in.

extern "C" int nothingOfAPlugin() {
    return 0;
}
