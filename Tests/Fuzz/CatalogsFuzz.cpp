// SPDX-License-Identifier: MIT

// Reads bytes as a catalog, and what it gave once more, written anew.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Base/Strings/zeStringTableManager.h"
#include "Base/Strings/zeStringTableStringTable.h"
#include "Support/TempFolder.h"

#include "Fuzz/require.h"

using zeString::IString;
using zeStringTable::appStringTable;
using zeStringTable::Key;

namespace {

zeUtil::Error load(const std::string& bytes) {
    static const TempFolder folder{TempFolder::memory()};
    appStringTable().clear();
    return zeStringTable::Manager::loadCatalog(IString(folder.write("c", bytes).c_str()));
}

/// What is in the table, as a catalog that says the same.
std::string written() {
    std::vector<Key> keys;
    appStringTable().getKeys([](const Key&, const Key&) { return 0; }, "", keys);
    require(keys.size() == appStringTable().size());
    std::string catalog;
    for (const Key& key : keys) {
        require(Key::isValidKeyString(key.value()) && key.value().isAscii());
        IString value(appStringTable().getString(key, IString()));
        value.replace(L"\"", L"\"\"").replace(L"\n", L"\\n").replace(L"\t", L"\\t");
        catalog += std::string(key.value().asChar()) + " = \"" + value.asUTF8() + "\"\n";
    }
    return catalog;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const zeUtil::Error error = load(bytes);
    require(error.code() == 0 || error.code() == 3 || error.code() == 5);
    require(appStringTable().size() <=
            static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\n')) +
                bytes.size() / 4097 + 1);
    // Without backslashes, which a catalog cannot always hold, and lines too long for one, the
    // table comes back as it was.
    const std::string first = written();
    const bool isFaithful = bytes.find('\\') == bytes.npos && bytes.size() < 2000;
    require(load(first).code() == 0 || !isFaithful);
    require(written() == first || !isFaithful);
    return 0;
}
