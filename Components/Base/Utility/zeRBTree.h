// SPDX-License-Identifier: MIT

/// @file
/// The red-black tree under associative containers.
///
/// ze::RBTreeMap (zeRBTreeMap.h) and ze::RBTreeSet (zeRBTreeSet.h) are the typed front ends and
/// what applications use; ze::RBTreeImpl (zeRBTreeCore.h) is the machinery, compiled once for all
/// types. This header gives all three.
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
#include "Base/Utility/zeRBTreeSet.h"
