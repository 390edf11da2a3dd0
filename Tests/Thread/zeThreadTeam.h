// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Thread/zeThreadThread.h"
#include "Base/Utility/zeRTBSignal.h"
#include "Base/Utility/zeUtilError.h"

/// Threads 0, 1, 2 and so on, each of which runs `body` with its number. Waits for all when it
/// dies.
class Team {
public:
    Team(int size, std::function<void(int)> body) : body_(std::move(body)) {
        for (int number = 0; number < size; ++number) {
            members_.push_back(std::make_unique<zeThread::Thread>());
            members_.back()->getSignal()->connectOwned([this, number] { body_(number); });
        }
        for (const auto& member : members_)
            EXPECT_EQ(member->start().code(), 0);
    }
    Team(const Team&) = delete;
    Team& operator=(const Team&) = delete;
    ~Team() {
        for (const auto& member : members_)
            EXPECT_EQ(member->wait().code(), 0);
    }

private:
    std::function<void(int)> body_;
    std::vector<std::unique_ptr<zeThread::Thread>> members_;
};

/// The Error that `body` throws, or success.
template<class Body>
zeUtil::Error thrownBy(Body body) {
    try {
        body();
    } catch (const zeUtil::Error& error) {
        return error;
    }
    return {};
}
