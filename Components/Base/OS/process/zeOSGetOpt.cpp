// SPDX-License-Identifier: MIT

// Declaring, parsing and reading results. Usage texts and checks of files are in sources of their
// own.

#include "Base/OS/zeOSGetOpt.h"

#include <algorithm>

#include "Base/OS/process/zeOSGetOptImpl.h"

namespace zeOS {

using zeString::CString;
using zeString::IString;

GetOpt::GetOpt() : impl_(new GetOptImpl(*this)) {}

GetOpt::~GetOpt() {
    delete impl_;
}

GetOpt::option* GetOpt::addOption(const char* names, const char* types) {
    return impl_->addOption(names, types);
}

void GetOpt::addOptionUsage(int index, const wchar_t* text) {
    if (option* const declared = impl_->optionAt(index))
        declared->usage = text;
}

void GetOpt::markOptionDeprecated(int index) {
    if (option* const declared = impl_->optionAt(index))
        declared->deprecated = true;
}

bool GetOpt::isOptionDeprecated(int index) const {
    const option* const declared = impl_->optionAt(index);
    return declared != nullptr && declared->deprecated;
}

bool GetOpt::isOptionDeprecated(const option* declared) const {
    return declared->deprecated;
}

void GetOpt::needLeadingDash(bool isNeeded) {
    impl_->needLeadingDash = isNeeded;
}

bool GetOpt::getNeedLeadingDash() const {
    return impl_->needLeadingDash;
}

void GetOpt::initialize(int argc, const char* const* argv) {
    impl_->args.assign(argv, argv + std::max(argc, 0));
}

void GetOpt::initialize(int argc, const wchar_t* const* argv) {
    impl_->args.assign(argv, argv + std::max(argc, 0));
}

void GetOpt::initialize(const std::vector<IString>& arguments) {
    impl_->args.assign(arguments.begin(), arguments.end());
}

const GetOpt::result* GetOpt::getOpt() {
    return impl_->getOpt();
}

void GetOpt::remaining(std::vector<IString>& arguments) const {
    arguments.assign(impl_->args.begin(), impl_->args.end());
}

const GetOpt::result* GetOpt::getCurrentResult() const {
    const bool isThere = !impl_->hasError && impl_->current.option != nullptr;
    return isThere ? &impl_->current : nullptr;
}

bool GetOpt::hasErrors() const {
    return impl_->hasError;
}

const IString& GetOpt::getError() const {
    return impl_->error;
}

void GetOpt::resetError() {
    impl_->hasError = false;
}

void GetOpt::abort() {
    impl_->hasError = true;
}

const GetOpt::option* GetOpt::getResultOption(const result* found) const {
    return found->option;
}

int GetOpt::getNumArguments(const result* found) const {
    return static_cast<int>(found->arguments.size());
}

IString GetOpt::getResultArg(const result* found, int i) const {
    const bool isThere = i >= 0 && i < getNumArguments(found);
    return isThere ? found->arguments[static_cast<std::size_t>(i)] : IString();
}

void GetOpt::getResultArgs(const result* found, std::vector<IString>& arguments) const {
    arguments = found->arguments;
}

const CString& GetOpt::getResultName(const result* found) const {
    return found->option->name;
}

int GetOpt::getResultIndex(const result* found) const {
    return found->option->index;
}

int GetOpt::getNumOptions() const {
    return static_cast<int>(impl_->options.size());
}

const GetOpt::option* GetOpt::getOption(int i) const {
    return impl_->optionAt(i);
}

const CString& GetOpt::getOptionName(const option* declared) const {
    return declared->name;
}

int GetOpt::getOptionIndex(const option* declared) const {
    return declared->index;
}

int GetOpt::findOption(const char* name) const {
    const option* const declared = impl_->root->find(name);
    return declared != nullptr ? declared->index : -1;
}

} // namespace zeOS
