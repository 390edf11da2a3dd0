// SPDX-License-Identifier: MIT

/// @file
/// The red-black tree under associative containers.
///
/// ze::RBTreeMap (zeRBTreeMap.h) is the typed front end and what applications use; ze::RBTreeImpl
/// (zeRBTreeCore.h) is the machinery, compiled once for all types. This header gives both.
///
/// Threads: a tree belongs to one thread at a time; const operations may overlap each other.
///
/// @code
/// ze::RBTreeMap<int, double> tree;
/// tree.insert(2, 0.5);
/// tree.insert(1, 0.25);
/// assert(tree.begin()->key() == 1 && tree.size() == 2);
/// @endcode

#pragma once

#include "Base/Utility/zeRBTreeCore.h"
#include "Base/Utility/zeRBTreeMap.h"
