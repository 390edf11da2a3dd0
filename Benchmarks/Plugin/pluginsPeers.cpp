// SPDX-License-Identifier: MIT

// The work of plugins.cpp by hand: a list that is searched, and a tree of names; and bare dlopens
// of the same files, which register nothing.

#include <dlfcn.h>

#include <map>

#include "Plugin/pluginsWorkload.h"

namespace {

using Names = std::vector<std::wstring>;

Names wideNames(size_t count) {
    Names names;
    for (const std::string& name : bench::serviceNames(count))
        names.emplace_back(name.begin(), name.end());
    return names;
}

template<class Table, class Find>
void lookup(State& s, const Table& table, Names names, Find find) {
    bench::shuffle(names, 7);
    size_t found = 0;
    for (auto _ : s)
        for (const std::wstring& name : names)
            found += find(table, name);
    bench::require(found == names.size() * size_t(s.iterations()), "each service");
    bench::items(s, names.size());
}

template<class Use>
bool openAll(Use use) {
    bool opened = true;
    for (const auto& entry : std::filesystem::directory_iterator(bench::program() + "/plug-ins")) {
        void* library = dlopen(entry.path().c_str(), RTLD_LAZY);
        opened &= library != nullptr;
        use(library);
    }
    return opened;
}

/// The same as the loader looks up and calls.
void install(void* library) {
    for (const char* missing : {"initializePlugin", "getPluginProxyName"})
        bench::require(!dlsym(library, missing) && dlerror(), missing);
    void* function = dlsym(library, "installPluginServices");
    bench::require(function, "the function that installs");
    reinterpret_cast<void (*)(void*)>(function)(nullptr); // services without a proxy
}

const bool registered = [] {
    for (const size_t count : {10, 100, 1000, 10000}) {
        const std::string size = "/" + std::to_string(count);
        bench::reg("lookup/std_map" + size, [=](State& s) {
            const Names names = wideNames(count);
            std::map<std::wstring, size_t> table;
            for (size_t i = 0; i < count; ++i)
                table.emplace(names[i], i);
            lookup(s, table, names,
                   [](const auto& all, const auto& name) { return all.count(name); });
        });
        bench::reg("lookup/context_list" + size, [=](State& s) {
            lookup(s, wideNames(count), wideNames(count), [](const auto& all, const auto& name) {
                return std::find(all.begin(), all.end(), name) != all.end();
            });
        });
    }
    bench::regScan("dlopen_and_install", [] { return openAll(install); });
    bench::regScan("limit_dlopen", [] { return openAll([](void*) {}); });
    return true;
}();

} // namespace
