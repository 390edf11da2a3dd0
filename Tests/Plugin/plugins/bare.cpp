// SPDX-License-Identifier: MIT
// A library without any of the functions of a plug-in.

#include "Base/zeBaseExport.h"

extern "C" {
ZEBASE_API extern int value;
int value = 7;
}
