// SPDX-License-Identifier: MIT

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iterator>
#include <new>

#include "Base/OS/zeOSAppOutput.h"
#include "Base/zeBaseExport.h"

#include "Shared/failure.h"
#include "Shared/save.h"
#include "Shared/terminal.h"
#include "command.h"
#include "package.h"
#include "sources.h"

namespace zepackage {

namespace {

/// Passes the content of an entry on.
using Read = std::function<void(const std::function<void(std::string_view)>& take)>;

/// Calls `use` for one entry after the other. A failure of one is reported, and the others follow.
/// Without `what`, no progress is shown.
bool forEach(const Entries& entries, const Arguments& arguments, const char* what,
             const std::function<void(const ioPackageFileEntry&, const Read&)>& use) {
    std::int64_t total = 0;
    for (const ioPackageFileEntry* entry : entries)
        total += entry->getSize();
    app::Progress progress(what, arguments.verbose || what == nullptr ? 0 : total);
    std::int64_t done = 0;
    bool isSound = true;
    for (const ioPackageFileEntry* entry : entries) {
        std::int64_t read = 0;
        try {
            use(*entry, [&](const std::function<void(std::string_view)>& take) {
                readEntry(*entry, [&](std::string_view block) {
                    take(block);
                    read += static_cast<std::int64_t>(block.size());
                    // What a compressed entry holds is more than what is read of the package.
                    progress.report(done + std::min<std::int64_t>(read, entry->getSize()));
                });
            });
            reportDone(nameOf(*entry), arguments);
        } catch (const app::Failure& failure) {
            report(failure.what());
            isSound = false;
        }
        done += entry->getSize();
    }
    return isSound;
}

void addSources(ioPackageFile& package, const Sources& sources, const Arguments& arguments) {
    std::int64_t total = 0;
    for (const auto& [name, source] : sources)
        total += source.size;
    app::Progress progress("adding", arguments.verbose ? 0 : total);
    std::int64_t done = 0;
    for (const auto& [name, source] : sources) {
        check(package.addEntry(libraryText(source.path), libraryText(name), arguments.compress),
              source.path);
        progress.report(done += source.size);
        reportDone(name, arguments);
    }
}

Sources sourcesOf(const Arguments& arguments) {
    Sources sources = findSources(arguments);
    if (sources.empty())
        throw app::Failure(arguments.package() + ": there are no files to put into it");
    return sources;
}

void extractEntry(const ioPackageFileEntry& entry, const Read& read, bool replace, Folder& folder) {
    const std::string name = nameOf(entry);
    zeUtil::Descriptor file = folder.create(name, replace);
    const auto require = [&](bool isDone) {
        if (!isDone)
            throw app::Failure(name + ": cannot be written: " + app::systemMessage(errno));
    };
    try {
        read([&](std::string_view block) { require(app::writeAll(file.get(), block)); });
        const timespec times[] = {{0, UTIME_OMIT}, {entry.getTimeStamp(), 0}};
        futimens(file.get(), times);
        require(file.close() == 0);
        folder.finish(name);
    } catch (...) {
        folder.undo();
        throw;
    }
}

} // namespace

bool create(const Arguments& arguments) {
    const Sources sources = sourcesOf(arguments);
    createPackage(arguments.package(), arguments.force,
                  [&](ioPackageFile& package) { addSources(package, sources, arguments); });
    return true;
}

/// What cannot be right is found out before the package is copied.
bool add(const Arguments& arguments) {
    const PackageReader before(arguments.package());
    const Sources sources = sourcesOf(arguments);
    editPackage(arguments.package(),
                [&](ioPackageFile& package) { addSources(package, sources, arguments); });
    return true;
}

bool remove(const Arguments& arguments) {
    const PackageReader before(arguments.package());
    const Entries entries = selectEntries(before.package(), arguments.names());
    editPackage(arguments.package(), [&](ioPackageFile& package) {
        for (const ioPackageFileEntry* entry : entries) {
            check(package.deleteEntry(entry->getName()), nameOf(*entry));
            reportDone(nameOf(*entry), arguments);
        }
    });
    return true;
}

bool compact(const Arguments& arguments) {
    compactPackage(arguments.package());
    return true;
}

bool extract(const Arguments& arguments) {
    const PackageReader package(arguments.package());
    const Entries entries = selectEntries(package.package(), arguments.names());
    Folder folder(arguments.folder);
    return forEach(entries, arguments, "extracting",
                   [&](const ioPackageFileEntry& entry, const Read& read) {
                       extractEntry(entry, read, arguments.force, folder);
                   });
}

bool cat(const Arguments& arguments) {
    const PackageReader package(arguments.package());
    return forEach(selectEntries(package.package(), arguments.names()), arguments, nullptr,
                   [](const ioPackageFileEntry&, const Read& read) {
                       read([](std::string_view block) {
                           if (!app::writeAll(STDOUT_FILENO, block))
                               throw std::runtime_error("standard output: cannot be written: " +
                                                        app::systemMessage(errno));
                       });
                   });
}

bool verify(const Arguments& arguments) {
    const PackageReader package(arguments.package());
    const Entries entries = selectEntries(package.package(), arguments.names());
    std::int64_t bytes = 0;
    const bool isSound =
        forEach(entries, arguments, "verifying", [&](const ioPackageFileEntry&, const Read& read) {
            read([&](std::string_view block) { bytes += static_cast<std::int64_t>(block.size()); });
        });
    if (isSound)
        zeOS::AppOutput::getInstance().application1(
            "%s: sound: %zu entr%s of %ld bytes\n", app::visible(arguments.package()).c_str(),
            entries.size(), entries.size() == 1 ? "y" : "ies", bytes);
    return isSound;
}

namespace {

struct Command {
    const char* name;
    const char* words; ///< What it takes; "NAME..." is one or more, in brackets none as well.
    std::vector<std::string> options;
    bool (*run)(const Arguments&);
};

const Command commands[] = {
    {"create", "PACKAGE FILE...", {"compress", "directory", "force"}, create},
    {"list", "PACKAGE [NAME]...", {"json"}, list},
    {"add", "PACKAGE FILE...", {"compress", "directory"}, add},
    {"extract", "PACKAGE [NAME]...", {"directory", "force"}, extract},
    {"cat", "PACKAGE NAME...", {}, cat},
    {"delete", "PACKAGE NAME...", {}, remove},
    {"compact", "PACKAGE", {}, compact},
    {"verify", "PACKAGE [NAME]...", {}, verify},
};

const Command& findCommand(const Arguments& arguments) {
    if (arguments.words.empty())
        throw app::UsageError("a command is missing");
    const std::string& name = arguments.words[0];
    const auto* const command =
        std::find_if(std::begin(commands), std::end(commands),
                     [&](const Command& each) { return name == each.name; });
    if (command == std::end(commands))
        throw app::UsageError("there is no command '" + name + "'");
    const std::string_view takes = command->words;
    const std::size_t least = takes.ends_with(" NAME...") || takes.ends_with(" FILE...") ? 3 : 2;
    const bool isEndless = takes.ends_with("...");
    const std::size_t count = arguments.words.size();
    if (count < least || (count > least && !isEndless))
        throw app::UsageError(name + " takes " + command->words);
    return *command;
}

bool runCommand(const Arguments& arguments) {
    const Command& command = findCommand(arguments);
    for (const std::string& option : arguments.options)
        if (option != "verbose" && std::find(command.options.begin(), command.options.end(),
                                             option) == command.options.end())
            throw app::UsageError(std::string(command.name) + " takes no option --" + option);
    const std::string& package = arguments.package();
    if (package == app::standardStream)
        throw app::UsageError("a package is changed in place, and cannot be standard input or "
                              "output (a file of that name is ./-)");
    bool isDone = false;
    try {
        isDone = command.run(arguments);
    } catch (const app::Failure& failure) {
        report(failure.what());
    }
    for (const std::string& note : app::leftoverNotes(package))
        report(note);
    return isDone;
}

bool runArguments(const Arguments& arguments) {
    zeOS::AppOutputStream& out = zeOS::AppOutput::getInstance().application1;
    bool isDone = true;
    if (arguments.help)
        out("%s", helpText);
    else if (arguments.version)
        out("zepackage (zeBase) %d.%d.%d\n", ZEBASE_VERSION_MAJOR, ZEBASE_VERSION_MINOR,
            ZEBASE_VERSION_PATCH);
    else
        isDone = runCommand(arguments);
    if (out.ok() && (std::fflush(out.getFile()) != 0 || std::ferror(out.getFile()) != 0))
        throw app::Failure("standard output: cannot be written");
    return isDone;
}

} // namespace

void report(const std::string& message) {
    std::fprintf(stderr, "zepackage: %s\n", app::visible(message).c_str());
}

void reportDone(const std::string& name, const Arguments& arguments) {
    if (arguments.verbose)
        std::fprintf(stderr, "%s\n", app::visible(name).c_str());
}

int run(const std::vector<std::string>& arguments) {
    try {
        return runArguments(parseArguments(arguments)) ? 0 : 1;
    } catch (const app::UsageError& error) {
        report(error.what());
        std::fputs("Try 'zepackage --help'.\n", stderr);
        return 2;
    } catch (const std::bad_alloc&) {
        report("out of memory");
    } catch (const std::exception& error) {
        report(error.what());
    }
    return 1;
}

} // namespace zepackage
