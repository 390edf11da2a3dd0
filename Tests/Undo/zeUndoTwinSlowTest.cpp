// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "Undo/undoTwin.h"

TEST(UndoTwin, AnswersAsTheManagerDoesAMillionTimes) {
    for (unsigned int seed = 100; seed < 110; ++seed)
        twin::Trial(seed).run(100000);
}
