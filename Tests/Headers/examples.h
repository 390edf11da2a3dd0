// SPDX-License-Identifier: MIT

/// @file
/// What the sources that are made of the headers' examples use.

#pragma once

/// Makes a test of the example; called while statics are constructed. The result has no meaning.
bool registerExample(const char* header, int number, void (*example)());
