// SPDX-License-Identifier: MIT

#include <optional>

#include "Base/OS/zeOSStopWatch.h"
#include "Base/Thread/zeThreadPool.h"
#include "Base/Thread/zeThreadTaskQueue.h"
#include "Base/Utility/zeUtilProgress.h"

#include "occlusion/command.h"

namespace occlusion {

namespace {

/// Threads for the algorithms and the tasks of this process, as long as it lives.
class Workers {
public:
    explicit Workers(int threads) : pool_(threads) {
        zeUtil::ThreadPool::install(&pool_);
        queue_.emplace(); // over the pool that is installed
        zeUtil::ThreadedTaskQueue::install(&*queue_);
    }

private:
    zeThread::Pool pool_;
    std::optional<zeThread::TaskQueue> queue_;
};

/// Does the next step, which has a share of the whole progress. Returns how long it took.
template<class Step>
double timed(zeUtil::Progress& whole, double share, const Step& step) {
    zeUtil::Progress phase;
    whole.subPhase(share, phase);
    zeOS::StopWatch watch;
    watch.start();
    step(phase);
    return watch.stop();
}

} // namespace

Result compute(const Mesh& mesh, const Settings& settings, int threads,
               zeUtil::Progress& progress) {
    std::optional<Workers> workers;
    if (threads > 1)
        workers.emplace(threads);
    Result result;
    std::optional<Tree> tree;
    result.seconds[0] =
        timed(progress, 0.1, [&](zeUtil::Progress& phase) { tree.emplace(mesh, phase); });
    result.seconds[1] = timed(progress, 0.7, [&](zeUtil::Progress& phase) {
        result.visibility = visibility(mesh, *tree, settings.rays, phase);
    });
    result.seconds[2] = timed(progress, 0.2, [&](zeUtil::Progress& phase) {
        if (!settings.picture.empty())
            result.picture = render(mesh, *tree, result.visibility, settings.view, phase);
    });
    return result;
}

} // namespace occlusion
