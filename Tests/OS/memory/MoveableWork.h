// SPDX-License-Identifier: MIT

/// @file
/// Random work on the allocators of moveable memory, compared step by step with plain models. The
/// fast tests do some of it, the slow ones ten million steps.

#pragma once

/// MMAllocator against a twin that searches and merges in plain arrays: the same places, and the
/// same blocks, after each of `steps` allocations and releases.
void compareWithTwin(int steps);

/// MMAllocator when memory for a chunk runs out: nothing is lost.
void runOutOfMemory();

/// Chunks of a MoveableAllocator that are allocated, mapped, written, checked, unmapped and
/// deleted: each keeps its content, none overlap, and the counts are right.
void keepContents(int steps);
