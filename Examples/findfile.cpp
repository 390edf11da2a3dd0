// SPDX-License-Identifier: MIT

// From a name to a file: a user may give a URL, a path, or the name of something that lies in one
// of several directories. What is in none of them may still lie further down.
//
//     $ mkdir -p mine shared/tiles/.old
//     $ touch shared/wood.exr shared/tiles/brick.exr shared/tiles/.old/brick.exr
//     $ findfile mine:shared:none wood.exr
//     shared/wood.exr
//     $ touch mine/wood.exr
//     $ findfile mine:shared:none wood.exr
//     mine/wood.exr
//     $ findfile mine:shared:none ./wood.exr
//     there is no ./wood.exr in mine:shared
//     $ findfile mine:shared:none tiles/brick.exr
//     there is no tiles/brick.exr in mine:shared
//     but there is shared/tiles/brick.exr
//     $ findfile mine:shared:none 'http://Store.example:8080/tiles/brick.exr?size=2k'
//     brick.exr is at store.example, port 8080: /tiles/brick.exr, size=2k

#include <clocale>
#include <cstdio>
#include <vector>

#include "Base/OS/zeOSDirectoryIterator.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/OS/zeOSSearchPath.h"
#include "Base/OS/zeOSURL.h"
#include "Base/Strings/zeUtilSplit.h"

namespace {

using zeOS::Filename;
using zeString::IString;

/// Nothing is fetched: a URL only says where something is.
int sayWhere(const zeOS::URL& url) {
    std::printf("%s is at %s, port %d: %s, %s\n", url.basename(false).asChar(),
                url.getHost().asChar(), url.getPort(), url.getPath(false).asChar(),
                url.getQuery(false).asChar());
    return 0;
}

bool isHidden(const Filename& name) {
    return name.basename().find(L'.') == 0;
}

/// All files with the base name of `wanted`, in or below a directory. The walk goes level by level,
/// so that the nearest come first.
std::vector<IString> filesBelow(const IString& directory, const Filename& wanted) {
    std::vector<IString> found;
    for (zeOS::DirectoryIterator it(directory); it.valid(); it.next()) {
        const Filename name(it.getName());
        if (it.onDirectory() && isHidden(name))
            it.prune(); // Nothing below it is looked at.
        else if (it.onFile() && name.basename() == wanted.basename())
            found.push_back(it.getName());
    }
    return found;
}

int find(const zeOS::SearchPath& path, const IString& name) {
    // As a shell does it: a name with a directory in it is looked for from the current one alone.
    const IString file = path.findFile(name);
    if (!file.isEmpty()) {
        std::printf("%s\n", file.asUTF8());
        return 0;
    }
    const IString& directories = path.getDirectories(); // Without those that do not exist.
    std::printf("there is no %s in %s\n", name.asUTF8(), directories.asUTF8());
    const std::vector<IString> list = zeUtil::split(directories, Filename::pathSeparator());
    for (const IString& directory : list)
        for (const IString& other : filesBelow(directory, name))
            if (Filename(other).dirname() != directory)
                std::printf("but there is %s\n", other.asUTF8());
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, ""); // Names are decoded in the user's encoding.
    if (argc != 3) {
        std::fputs("usage: findfile DIRECTORY[:DIRECTORY]... NAME\n", stderr);
        return 2;
    }
    const zeOS::URL url(argv[2]);
    if (!url.isLocalFile())
        return sayWhere(url);
    zeOS::SearchPath path;
    path.initialize(argv[1]);
    return find(path, IString(argv[2]));
}
