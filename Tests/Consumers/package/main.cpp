// SPDX-License-Identifier: MIT
#include <cstdio>

#include "Base/Utility/zeReferenceCount.h"

struct Mesh : ze::ReferenceCount {
    int vertices = 8;
};

int main() {
    ze::Reference<Mesh> mesh(new Mesh);
    std::printf("%d vertices, %d owner\n", mesh->vertices, mesh->refs());
    return mesh->refs() == 1 ? 0 : 1;
}
