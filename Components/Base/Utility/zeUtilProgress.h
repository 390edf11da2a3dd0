// SPDX-License-Identifier: MIT

/// @file
/// How far a long operation has come, and whether it should stop: zeUtil::Progress.
///
/// A caller hands a Progress to an operation, which reports a fraction from 0 to 1 and asks from
/// time to time whether to go on. An operation of several steps gives each of them a phase with
/// its share of the whole. A phase is a Progress too, and runs from 0 to 1 in its own terms.
///
/// **Who listens.** A user interface connects to the signals of the first Progress, the root. Every
/// signal passes this root. `getSigUpdate()` fires after each set(), even if the value is the same;
/// nothing throttles it. `getSigCheckCancel()` fires when the operation asks cancelled(): there the
/// interface looks for input, and calls cancel() if the user wants to stop.
///
/// **Lifetime.** The end of a phase completes it, so that a phase which forgot to report 1.0
/// delivers its whole share. End phases before their root: a phase that is left over does not
/// complete itself, but its set() still fires the root's signals, with a pointer to a root that is
/// gone. A listener must not throw, and must not destroy a Progress.
///
/// Threads: a root and its phases belong to one thread at a time. Parallel code reports through
/// zeUtil::ThreadedAlgBase, which lets one thread speak.
///
/// @code
/// #include <vector>
/// zeUtil::Progress progress;
/// std::vector<double> seen;
/// progress.getSigUpdate().connectOwned([&](zeUtil::Progress* p) { seen.push_back(p->get()); });
///
/// zeUtil::Progress phase;
/// progress.subPhase(0.75, phase);
/// phase.set(0.5); // the whole stands at 0.375
/// progress.subPhase(0.25, phase); // completes the first phase and begins the second one
/// phase.set(1.0);
/// assert((seen == std::vector<double>{0.375, 0.75, 1.0}));
/// @endcode

#pragma once

#include "Base/Utility/zeRTBSignal.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/zeBaseExport.h"

namespace zeUtil {

/// The progress of an operation, or of one phase of it.
class ZEBASE_API Progress {
public:
    /// The signals of a Progress. The argument is the root, also for what happens in a phase.
    using Signal = zeRTB::SignalArg<Progress*>;

    /// A root, which stands at 0.
    Progress();
    Progress(const Progress&) = delete; ///< Signals know a root by its address. Hand on references.
    Progress& operator=(const Progress&) = delete;

    /// Completes a phase, as set(1.0) does, unless a Progress that it is a part of has ended
    /// before. Fires the destroy signal of a root.
    ~Progress();

    /// Sets how far this phase, or root, has come, and fires the update signal. Values above 1.0
    /// count as 1.0; lower values than before take progress back, and may be negative.
    ///
    /// The change, times the weights on the way up, is added to each phase that this one is a part
    /// of, and to the root. A phase that reaches its end stands at 1.0, but passes the whole change
    /// on: what is reported beyond 1.0 counts for the root. Costs a step for each level, and what
    /// the listeners do.
    void set(double value);

    /// The value of the root, also for a phase.
    double get() const;

    /// @{
    /// A signal of the root: fired after each set(); when the root ends; after each setCaption();
    /// and when cancelled() asks the listeners.
    Signal& getSigUpdate();
    Signal& getSigDestroy();
    Signal& getSigCaption();
    Signal& getSigCheckCancel();
    /// @}

    /// Asks the whole operation to stop, for good. Fires nothing.
    void cancel();

    /// Whether the whole operation should stop. Until somebody called cancel(), it fires the
    /// check-cancel signal, in which a listener may do so.
    bool cancelled();

    /// Says what is being done, null for nothing, and fires the caption signal. There is one
    /// caption, that of the root.
    void setCaption(const char* caption);

    /// The caption, empty at first. Valid until the next setCaption().
    const char* getCaption() const;

    /// Makes `sub` the next phase of this one, with the share `weight` of it. What `sub` was before
    /// ends first: a phase is completed, and a root, such as a fresh Progress, fires its destroy
    /// signal. The weights of all phases should add up to 1, which nobody checks. `sub` must not be
    /// this object, nor one that this is a part of.
    void subPhase(double weight, Progress& sub);

private:
    class Impl;
    class RootProgress;
    class SubProgress;

    ze::Reference<Impl> impl_;
};

} // namespace zeUtil
