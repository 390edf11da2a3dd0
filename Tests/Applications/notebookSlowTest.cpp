// SPDX-License-Identifier: MIT

#include "Applications/notebookReplay.h"

TEST(NotebookHistory, KeepsUpWithItsModelForLong) {
    replay(2, 1000000);
}
