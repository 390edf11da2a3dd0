// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSGetOpt.h"
#include "Base/Strings/zeStringCString.h"

#include "Shared/failure.h"
#include "command.h"
#include "package.h"

namespace zepackage {

const char* const helpText =
    R"(usage: zepackage create PACKAGE FILE... [--compress] [--directory DIR] [--force]
       zepackage list PACKAGE [NAME]... [--json | --verbose]
       zepackage add PACKAGE FILE... [--compress] [--directory DIR]
       zepackage extract PACKAGE [NAME]... [--directory DIR] [--force]
       zepackage cat PACKAGE NAME...
       zepackage delete PACKAGE NAME...
       zepackage compact PACKAGE
       zepackage verify PACKAGE [NAME]...

Keeps files as the entries of one file, a package.

  create   makes a package of files, and of folders with all that is in them
  list     prints the names of entries
  add      puts files into a package, in the place of entries of the same name
  extract  writes entries into files, in the folders that their names give
  cat      writes what entries hold to standard output
  delete   takes entries out, and leaves their space free for others
  compact  writes a package anew, without free space
  verify   reads entries and says whether they are whole

A FILE is a file or a folder. A NAME is that of an entry, or of a folder of
entries; without one, all entries are meant.

  -c, --compress       compress files that get smaller by it; compressed entries
                       have checksums as well
  -C, --directory DIR  look for files in DIR, or extract to DIR
  -f, --force          replace a package, or the files that are extracted to
  -j, --json           list names, places, sizes and dates as JSON
  -v, --verbose        print each name, and list sizes and dates too
  -h, --help           print this and end
  -V, --version        print the version and end
  --                   all that follow are files or names

Options may stand anywhere; long ones may be shortened as long as they are
unambiguous, short ones joined; --directory=DIR is --directory DIR.

A package is changed whole or not at all: whatever happens, even if zepackage is
killed, it stays as it was or becomes what it should be. This takes the room of
a copy for a while. Plain entries have no checksum: verify finds them cut off,
but not altered. Extracting stays within DIR, follows no link in it, and goes on
after an entry that is damaged. Folders by themselves, links, devices and the
rights of files are not kept.

Exit codes: 0 success, 1 bad input or a failed write, 2 wrong use.
)";

namespace {

/// Takes options out of the words of a command line, wherever they stand.
class Parser {
public:
    explicit Parser(const std::vector<std::string>& list) : list_(list) {
        for (const Flag& flag : flags)
            options_.addOption(flag.names, nullptr);
        options_.addOption("C|directory", "string");
    }

    Arguments parse() {
        for (bool optionsEnded = false; at_ < list_.size();) {
            const std::string& word = list_[at_];
            if (optionsEnded || word.size() < 2 || word[0] != '-')
                result_.words.push_back(list_[at_++]);
            else if (word == "--")
                optionsEnded = (++at_ > 0);
            else
                option(word);
        }
        return std::move(result_);
    }

private:
    struct Flag {
        const char* names;
        bool Arguments::*value;
    };
    static constexpr Flag flags[] = {
        {"c|compress", &Arguments::compress}, {"f|force", &Arguments::force},
        {"j|json", &Arguments::json},         {"v|verbose", &Arguments::verbose},
        {"h|help", &Arguments::help},         {"V|version", &Arguments::version},
    };

    /// "--name", "--name value" or "--name=value"; "-n", "-n value", "-nvalue" or several in one
    /// word. The library knows only those of one or two words: it sees the name, and that there is
    /// a value, which may be anything.
    void option(const std::string& word) {
        const bool isLong = word.starts_with("--");
        const std::size_t end = isLong ? word.find('=') : 2;
        const std::string name = word.substr(0, end);
        const bool isJoined = end < word.size();
        if (name == "--") // would end the options
            throw app::UsageError("there is no option " + word);
        std::vector<zeString::IString> words = {libraryText(name)};
        if (isJoined || at_ + 1 < list_.size())
            words.emplace_back(L"value");
        options_.initialize(words);
        const zeOS::GetOpt::result* const found = options_.getOpt();
        if (found == nullptr) {
            const std::string message = options_.getError().asUTF8();
            throw app::UsageError(message.substr(0, message.find('\n')));
        }
        result_.options.emplace_back(options_.getResultName(found).asChar());
        const auto index = static_cast<std::size_t>(options_.getResultIndex(found));
        if (index == std::size(flags)) {
            result_.folder = isJoined ? word.substr(isLong ? end + 1 : end) : list_[++at_];
        } else {
            result_.*flags[index].value = true;
            if (isJoined && isLong)
                throw app::UsageError("option " + name + " takes no value");
            if (isJoined)
                return option("-" + word.substr(end));
        }
        ++at_;
    }

    const std::vector<std::string>& list_;
    std::size_t at_ = 0;
    zeOS::GetOpt options_;
    Arguments result_;
};

} // namespace

Arguments parseArguments(const std::vector<std::string>& list) {
    return Parser(list).parse();
}

} // namespace zepackage
