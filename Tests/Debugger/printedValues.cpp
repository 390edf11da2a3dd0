// SPDX-License-Identifier: MIT

// What prettyPrintersTest.py looks at in gdb, at the call of look().

#include "Base/Linear/zeLinearPoint.h"
#include "Base/Linear/zeLinearVector.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeRBTree.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/Utility/zeUtilError.h"

struct Mesh : ze::ReferenceCount {
    int vertices = 3;
};

// The arguments keep their places in memory.
void look(...) {}

int main() {
    const zeString::CString bytes("bytes \t with \"quotes\"");
    zeString::CString moved("x");
    const zeString::CString taken(static_cast<zeString::CString&&>(moved));
    const zeString::IString text(L"long enough to lie elsewhere \u20ac"), empty;
    const zeOS::Filename path("/models/scene.zd");
    const zeUtil::Error success, failure(2, "cannot open %s", "scene.zd"), bare(-1, "");
    const ze::Reference<Mesh> mesh(new Mesh), shared(mesh);
    const ze::Reference<const Mesh> null;
    ze::RBTreeMap<zeString::CString, int> map, none;
    for (const char* key : {"five", "two", "four", "one", "three"})
        map.insert(key, static_cast<int>(zeString::CString(key).length()));
    ze::RBTreeSet<int> set;
    for (int i = 0; i < 9; ++i)
        set.insert(i * 7 % 9);
    const zeLinear::Point point(1, 2.5, -3);
    const zeLinear::VectorFlt vector(0.5, 0, 1);
    const auto& emptyRef = none;
    const auto& pointRef = point;
    struct Nothing {};
    ze::RBTreeMap<int, Nothing> keys;
    keys[1] = {};
    alignas(ze::RBTreeSet<int>) char zeros[sizeof set] = {};
    const auto& unmade = reinterpret_cast<ze::RBTreeSet<int>&>(zeros);
    look(&bytes, &moved, &taken, &text, &empty, &path, &success, &failure, &bare, &mesh, &shared,
         &null, &map, &none, &set, &point, &vector, &emptyRef, &pointRef, &keys, &unmade);
}
