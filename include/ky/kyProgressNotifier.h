// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Progress of long operations: nested groups of weighted steps folded into one fraction, cancellation, a console bar
/// and a proxy for use from several threads.
///
/// \code
/// void convert(const std::vector<File>& files, ky::kyProgressNotifierInterface& progress)
/// {
///     ky::kyProgressNotifierGroupCloser closer; // ends the group on every way out
///     progress.beginStepGroup(static_cast<int>(files.size()), 1.0, &closer);
///     for (std::size_t i = 0; i < files.size() && !progress.shouldCancel(); ++i)
///     {
///         progress.changeCurrentStep(files[i].size(), i);
///         convertFile(files[i], progress); // calls incrementCurrentStepProgress(bytes), or nests its own group
///     }
/// }
/// \endcode

#include <ky/kyExport.h>
#include <ky/kyMutex.h>

#include <atomic>
#include <cstddef>
#include <limits>
#include <list>
#include <vector>

namespace ky
{

class kyProgressNotifierGroupCloser;

/// What a long operation reports to.
///
/// The work is a stack of step groups. Every group divides the current step of the group around it; one step of a group
/// is current, and within it the progress runs from 0 to the step's maximum. `getGlobalProgress()` folds all of this
/// into one number, from 0 to 1 for sensible input. While there is no group, that number is 1 and the operations on
/// steps do nothing.
///
/// Weights, maxima and progress are not checked: what the arithmetic makes of negative, infinite or NaN values becomes
/// the global progress. The order of the virtual functions is part of the binary interface.
class KY_API kyProgressNotifierInterface
{
public:
    virtual ~kyProgressNotifierInterface();
    kyProgressNotifierInterface(const kyProgressNotifierInterface&) = delete;
    kyProgressNotifierInterface& operator=(const kyProgressNotifierInterface&) = delete;

    /// Starts anew: drops all groups, begins one group of one step, and takes a cancellation back. A closer that still
    /// holds this notifier is to be forgiven first; otherwise it ends a group of the new run.
    virtual void resetNotifier() = 0;

    /// Whether the operation is asked to stop. Cheap; poll it often. May be called from any thread.
    [[nodiscard]] virtual bool shouldCancel() const = 0;

    /// Sets or clears this notifier's own request to stop. May be called from any thread.
    virtual void setInternalCancelFlag(bool cancel) = 0;

    /// Begins a group inside the current step; its first step becomes the current one.
    ///
    /// \param weights the steps' shares of the group, in any unit: weights 1 and 3 are a quarter and three quarters.
    ///        The group has a single step when there are no weights, when there is one, or when their sum is not
    ///        greater than 0.
    /// \param firstStepMax the progress at which the first step is complete; 1 is taken for values that are 0 or less
    /// \param closer ends the group when it goes out of scope; may be null. A notifier that it held before has its
    ///        innermost group ended first. As the new group is begun by then, a closer that already holds this very
    ///        notifier ends the new group: use a closer for one group.
    /// \throws std::bad_alloc without any change
    virtual void beginStepGroupWeights(const std::vector<double>& weights, double firstStepMax,
                                       kyProgressNotifierGroupCloser* closer) = 0;

    /// Ends the innermost group, which completes the current step of the group around it.
    virtual void endStepGroup() = 0;

    /// Goes to step `stepIndex` of the innermost group (the last one when there are not as many), with progress 0 of
    /// `stepMax` (1 when that is 0 or less).
    virtual void changeCurrentStep(double stepMax, std::size_t stepIndex) = 0;

    /// Starts the current step again with progress 0 of `max` (1 when that is 0 or less).
    virtual void setCurrentStepMaxProgress(double max) = 0;

    /// Progress and maximum of the current step. Without a group the arguments are left as they are.
    virtual void getCurrentStepProgress(double& progress, double& max) = 0;

    /// Sets the progress of the current step: at most its maximum, negative values included.
    virtual void setCurrentStepProgress(double progress) = 0;

    /// Adds to the progress of the current step; the sum is kept between 0 and the maximum. A sum that is not a number
    /// counts as 0.
    virtual void incrementCurrentStepProgress(double increment) = 0;

    /// The progress of the whole operation.
    [[nodiscard]] virtual float getGlobalProgress() const = 0;

    /// Begins a group of `stepCount` equal steps, as `beginStepGroupWeights` does. A single step for 0 or less.
    void beginStepGroup(int stepCount, double firstStepMax = 1.0, kyProgressNotifierGroupCloser* closer = nullptr);

    /// Asks the operation to stop.
    void cancelJob() { setInternalCancelFlag(true); }

    /// Takes `cancelJob()` back.
    void enableJob() { setInternalCancelFlag(false); }

protected:
    kyProgressNotifierInterface() = default;
};

/// The implementation. Derive from it and override `onProgressChanged` to show the progress.
///
/// One thread at a time, but for `shouldCancel()`, `cancelJob()` and `enableJob()`, which any thread may call at any
/// time; use `kyProgressNotifierThreadSafeProxy` to report from several threads.
///
/// `onProgressChanged` may throw: the change has been made by then, and the exception reaches the caller of the
/// operation that made it. Only `resetNotifier()` is then one step short: a cancellation stays.
class KY_API kyProgressNotifier : public kyProgressNotifierInterface
{
public:
    /// \param externalCancel a flag of the caller, who keeps it alive; null for none. It is read without a lock, as an
    ///        atomic object of relaxed order: where another thread sets it while the operation runs, the caller sets it
    ///        by an atomic operation as well (`std::atomic_ref`), or calls `cancelJob()` instead.
    /// \param parent a notifier, kept alive by the caller, whose cancellation also cancels this one; null for none.
    ///        Its `shouldCancel()` is called from every thread that asks this notifier.
    explicit kyProgressNotifier(const bool* externalCancel = nullptr,
                                const kyProgressNotifierInterface* parent = nullptr);
    ~kyProgressNotifier() override;

    void resetNotifier() override;

    /// Own request, external flag, or the parent's answer.
    [[nodiscard]] bool shouldCancel() const override;
    void setInternalCancelFlag(bool cancel) override;
    void beginStepGroupWeights(const std::vector<double>& weights, double firstStepMax,
                               kyProgressNotifierGroupCloser* closer) override;
    void endStepGroup() override;
    void changeCurrentStep(double stepMax, std::size_t stepIndex) override;
    void setCurrentStepMaxProgress(double max) override;
    void getCurrentStepProgress(double& progress, double& max) override;
    void setCurrentStepProgress(double progress) override;
    void incrementCurrentStepProgress(double increment) override;
    [[nodiscard]] float getGlobalProgress() const override;

protected:
    /// Called on the thread that made the change, when the new global progress, before it is rounded to a float, is not
    /// equal to the last one. The construction counts as a change to 0, which no derived class sees; every later
    /// `resetNotifier()` calls it. It may call any operation of the notifier.
    virtual void onProgressChanged(float globalProgress);

private:
    struct StepGroup
    {
        std::vector<double> scale;  ///< each step's share of the group
        std::vector<double> offset; ///< share of all steps before it
        std::size_t currentStep = 0;
        double stepMax = 1.0;
        double stepProgress = 0.0;
    };

    double foldGroups() const;
    void updateGlobalProgress();

    std::list<StepGroup> mGroups; ///< outermost first
    const bool* mExternalCancel;  ///< never null
    const kyProgressNotifierInterface* mParent;
    float mGlobalProgress = -1.0F;
    std::atomic<bool> mInternalCancel{false};
    bool mNeverCancelled = false; ///< what mExternalCancel points to when no flag was given
};

/// Draws a bar on the standard output, in place, whenever the whole percentage changes: a carriage return, then for
/// example `[==========          ] 50/100  `. The line is never ended: print "\n", or blanks over it, when done.
///
/// Nothing is drawn by the constructor; the first change draws, 0 percent included. Every drawing is one write to
/// `std::cout`'s buffer and one flush; errors of the output are ignored.
///
/// A progress below 0 or above 1 is drawn as computed (no signs and more blanks, or more signs and no blanks), up to
/// 65536 characters of each or the width of the bar, whichever is more. Values beyond the range of an `int` are taken
/// as the end of that range, and NaN as 0.
class KY_API kyProgressNotifierConsoleView : public kyProgressNotifier
{
public:
    /// \param externalCancel as for `kyProgressNotifier`
    /// \param barWidth characters between the brackets
    explicit kyProgressNotifierConsoleView(const bool* externalCancel = nullptr, int barWidth = 50);
    ~kyProgressNotifierConsoleView() override;

protected:
    void onProgressChanged(float globalProgress) override;

private:
    int mBarWidth;
    int mLastPercent = std::numeric_limits<int>::min(); ///< nothing drawn yet
};

/// Lets several threads report to one notifier: every call is forwarded under one mutex, but for `shouldCancel()`,
/// which never waits. `onProgressChanged` of the notifier behind it runs under that mutex, on the reporting thread.
///
/// The target is to be used through the proxy only, or its calls are not serialised; and its `shouldCancel()` has to be
/// callable from any thread, which is so for `kyProgressNotifier`. As "the current step" is shared, threads usually
/// share one step and call `incrementCurrentStepProgress`.
class KY_API kyProgressNotifierThreadSafeProxy : public kyProgressNotifierInterface
{
public:
    /// \param target not owned, not null; must outlive the proxy
    explicit kyProgressNotifierThreadSafeProxy(kyProgressNotifierInterface* target);
    ~kyProgressNotifierThreadSafeProxy() override;

    void resetNotifier() override;
    [[nodiscard]] bool shouldCancel() const override;
    void setInternalCancelFlag(bool cancel) override;

    /// The closer then holds the proxy, so that the group is ended under the mutex too.
    void beginStepGroupWeights(const std::vector<double>& weights, double firstStepMax,
                               kyProgressNotifierGroupCloser* closer) override;
    void endStepGroup() override;
    void changeCurrentStep(double stepMax, std::size_t stepIndex) override;
    void setCurrentStepMaxProgress(double max) override;
    void getCurrentStepProgress(double& progress, double& max) override;
    void setCurrentStepProgress(double progress) override;
    void incrementCurrentStepProgress(double increment) override;
    [[nodiscard]] float getGlobalProgress() const override;

private:
    kyProgressNotifierInterface* mTarget;
    mutable kyMutex mMutex;
};

/// Ends a step group when it goes out of scope. It holds a notifier, not a group: what it ends is the innermost group
/// at that time, so closers are to end in the reverse order of their groups, as local objects do.
///
/// The notifier must live as long as the closer holds it. Used by one thread at a time.
class KY_API kyProgressNotifierGroupCloser
{
public:
    kyProgressNotifierGroupCloser() = default;

    /// Ends the innermost group of the notifier that is held. What `onProgressChanged` throws there is dropped.
    ~kyProgressNotifierGroupCloser();
    kyProgressNotifierGroupCloser(const kyProgressNotifierGroupCloser&) = delete;
    kyProgressNotifierGroupCloser& operator=(const kyProgressNotifierGroupCloser&) = delete;

    /// Ends the innermost group of the notifier that is held, if any, even where it is the same one; then holds
    /// `notifier` (null: none).
    void setNotifier(kyProgressNotifierInterface* notifier);

    /// Holds no notifier any more; with `endGroup` its innermost group is ended.
    void forgiveNotifier(bool endGroup);

private:
    friend class kyProgressNotifierThreadSafeProxy;
    kyProgressNotifierInterface* mNotifier = nullptr;
};

/// Base of objects that can be given a notifier to report to. Not meant for deletion through a pointer to this class.
class KY_API kyProgressMonitorable
{
public:
    /// \param notifier not owned; must live as long as the object reports to it; null for none
    void setProgressNotifier(kyProgressNotifierInterface* notifier) { mNotifier = notifier; }

    /// Sets the progress of the notifier's current step. Nothing without a notifier.
    void setProgressValue(float value);

    /// Resets the notifier. Nothing without one.
    void resetProgressValue();

protected:
    /// The notifier that was given, or null.
    [[nodiscard]] kyProgressNotifierInterface* getProgressNotifier() const { return mNotifier; }

private:
    kyProgressNotifierInterface* mNotifier = nullptr;
};

} // namespace ky
