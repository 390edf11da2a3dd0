// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilInitializer.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

using zeUtil::Error;
using zeUtil::Initializer;

namespace {

std::string trace;

struct Member : Initializer {
    explicit Member(char name, Error result = Error()) : name_(name), result_(result) {}
    Error initialize() override {
        trace += name_;
        return result_;
    }
    void finalize() override { trace += static_cast<char>(name_ - 'A' + 'a'); }

    char name_;
    Error result_;
};

void start() {
    const Error error = Initializer::initializeAll();
    if (error.code() != 0)
        trace += '<' + std::to_string(error.code()) + ' ' + error.message() + '>';
}

void startAndStop() {
    start();
    Initializer::finalizeAll();
}

/// Runs the scenario in a child, since a process initialises only once, and compares the trace
/// that it leaves: a capital for each initialisation, a small letter for each end.
template<class Scenario>
void expectTrace(const char* expected, Scenario scenario) {
    EXPECT_EXIT(
        {
            scenario();
            std::fputs(trace.c_str(), stderr);
            _exit(0);
        },
        testing::ExitedWithCode(0), std::string("^") + expected + "$");
}

} // namespace

TEST(InitializerDeathTest, RunsAChainInOrderWhateverTheOrderOfRegistration) {
    std::string names = "ABC";
    do {
        expectTrace("CBAabc", [&] {
            Member* members[3];
            for (char name : names)
                members[name - 'A'] = new Member(name);
            members[0]->dependsOn(members[1]);
            members[1]->dependsOn(members[2]);
            startAndStop();
        });
    } while (std::next_permutation(names.begin(), names.end()));
}

TEST(InitializerDeathTest, OrdersByPathsAndFinalisesEveryMember) {
    expectTrace("D(BCAacb|CBAabc)d", [] { // a diamond
        static Member a('A'), b('B'), c('C'), d('D');
        a.dependsOn(&b);
        a.dependsOn(&c);
        b.dependsOn(&d);
        c.dependsOn(&d);
        startAndStop();
    });
    expectTrace("BCAacb", [] { // a repeated dependency counts each time
        static Member a('A'), c('C'), b('B');
        a.dependsOn(&c);
        a.dependsOn(&b);
        a.dependsOn(&b);
        startAndStop();
    });
    expectTrace("CB<7 broken><1 Initializer::initializeAll\\(\\) already called>abc", [] {
        static Member a('A'), b('B', Error(7, "broken")), c('C');
        a.dependsOn(&b);
        b.dependsOn(&c);
        start();
        startAndStop();
    });
    expectTrace("ba", [] { // never initialised
        static Member a('A'), b('B');
        Initializer::finalizeAll();
    });
}
