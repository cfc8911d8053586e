/*
 * The run loop: one per thread. It waits for and serves sources (signalled by hand), timers and
 * file descriptors. Each of them belongs to named modes; a run serves those of one mode.
 *
 * One pass of a run in mode M:
 *   1. fires the timers of M that are due, by fire date, those of equal date in the order of their
 *      creation;
 *   2. performs the sources of M that were signalled before this step, by their order number, each
 *      once; those signalled meanwhile wait for the next pass;
 *   3. looks for ready file descriptors of M, waiting for them, the next timer, a wake-up or the
 *      time limit if steps 1 and 2 did nothing and no source is signalled; calls them.
 * Any callback may add, remove, invalidate or release any source, timer, descriptor, itself
 * included, and may run the loop again, in any mode. Such a run does not perform the source, or fire the
 * timer, from whose callback it was started; a signal that the source gets meanwhile is served after its
 * perform has returned.
 *
 * Functions are called on the run loop's own thread, except BQRunLoopSourceSignal,
 * BQRunLoopWakeUp and BQRunLoopStop, which any thread may call; a source that is signalled from
 * another thread wakes the loops it is on by itself.
 */
#ifndef BQ_RUN_LOOP_H
#define BQ_RUN_LOOP_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** Why a run came back. */
typedef enum BQRunLoopRunResult {
  /** The mode has no source, timer or descriptor, or is null. */
  kBQRunLoopRunFinished = 1,
  /** BQRunLoopStop was called. */
  kBQRunLoopRunStopped = 2,
  /** The time limit passed. */
  kBQRunLoopRunTimedOut = 3,
  /** A source was performed or a descriptor served, and the caller asked to return then. */
  kBQRunLoopRunHandledSource = 4
} BQRunLoopRunResult;

/** The mode for ordinary work. */
BQ_EXPORT extern const BQString* const kBQRunLoopDefaultMode;

/** The identifier of the run loop class. */
BQ_EXPORT BQTypeID BQRunLoopGetTypeID(void);

/** The identifier of the source class. */
BQ_EXPORT BQTypeID BQRunLoopSourceGetTypeID(void);

/** The identifier of the timer class. */
BQ_EXPORT BQTypeID BQRunLoopTimerGetTypeID(void);

/** The identifier of the file descriptor class. */
BQ_EXPORT BQTypeID BQFileDescriptorGetTypeID(void);

/**
 * The calling thread's run loop, made on first use, destroyed with the thread; borrowed. Sources
 * that are on it then are released without a call to their cancel function. Null after that, for
 * destructors and functions of `atexit` that run later.
 */
BQ_EXPORT BQRunLoop* BQRunLoopGetCurrent(void);

/** The mode of the innermost run, owned by the caller; null when the loop does not run. */
BQ_EXPORT const BQString* BQRunLoopCopyCurrentMode(BQRunLoop* runLoop);

/**
 * Runs the current thread's loop in a mode for at most `seconds` (0 or less: one pass without
 * waiting; any large number: no limit). With `returnAfterSourceHandled` it comes back after the
 * first pass that performed a source or served a descriptor.
 */
BQ_EXPORT BQRunLoopRunResult BQRunLoopRunInMode(const BQString* mode, BQTimeInterval seconds,
                                                bool returnAfterSourceHandled);

/** Runs the current thread's loop in the default mode until it is stopped or the mode is empty. */
BQ_EXPORT void BQRunLoopRun(void);

/** Makes the innermost run return when its present pass is done; no effect without one. Any thread. */
BQ_EXPORT void BQRunLoopStop(BQRunLoop* runLoop);

/** Makes a waiting loop look at everything again. Any thread. */
BQ_EXPORT void BQRunLoopWakeUp(BQRunLoop* runLoop);

/* Sources. */

/** The functions of a source. `info` is handed to each; every function may be null. */
typedef struct BQRunLoopSourceContext {
  /** 0. */
  BQIndex version;
  /** The caller's pointer; may be null. */
  void* info;
  /** Called with `info` when the record is copied; gives what the copy holds instead. */
  const void* (*retain)(const void* info);
  /** Called with what the copy holds when it is dropped. */
  void (*release)(const void* info);
  /** The description of `info`, owned by the caller. */
  const BQString* (*copyDescription)(const void* info);
  /** Whether two sources of the same order and functions are equal, by their `info`; identity without it. */
  bool (*equal)(const void* first, const void* second);
  /** The hash of `info`, the same where `equal` finds them equal. */
  BQHashCode (*hash)(const void* info);
  /** Called when the source was added to a mode of a run loop. */
  void (*schedule)(void* info, BQRunLoop* runLoop, const BQString* mode);
  /** Called when the source was removed from a mode of a run loop. */
  void (*cancel)(void* info, BQRunLoop* runLoop, const BQString* mode);
  /** Called once per signal. */
  void (*perform)(void* info);
} BQRunLoopSourceContext;

/**
 * A source, owned by the caller. Lower orders are performed first. Null for a null context or a
 * version other than 0.
 */
BQ_EXPORT BQRunLoopSource* BQRunLoopSourceCreate(BQIndex order, const BQRunLoopSourceContext* context);

/** Asks for one perform; several signals before it count as one. Any thread. */
BQ_EXPORT void BQRunLoopSourceSignal(BQRunLoopSource* source);

/** Takes the source off all run loops for good. */
BQ_EXPORT void BQRunLoopSourceInvalidate(BQRunLoopSource* source);

/** Whether the source was not invalidated. */
BQ_EXPORT bool BQRunLoopSourceIsValid(const BQRunLoopSource* source);

/** Adds a source to a mode, which retains it. No effect if it is there already or invalid. */
BQ_EXPORT void BQRunLoopAddSource(BQRunLoop* runLoop, BQRunLoopSource* source, const BQString* mode);

/** Removes a source from a mode. */
BQ_EXPORT void BQRunLoopRemoveSource(BQRunLoop* runLoop, BQRunLoopSource* source, const BQString* mode);

/** Whether a source is in a mode. */
BQ_EXPORT bool BQRunLoopContainsSource(BQRunLoop* runLoop, BQRunLoopSource* source, const BQString* mode);

/* Timers. */

/** Called when a timer fires. */
typedef void (*BQRunLoopTimerCallBack)(BQRunLoopTimer* timer, void* info);

/** What a timer is given besides its function; every function may be null. */
typedef struct BQRunLoopTimerContext {
  /** 0. */
  BQIndex version;
  /** The caller's pointer; may be null. */
  void* info;
  /** Called with `info` when the record is copied; gives what the copy holds instead. */
  const void* (*retain)(const void* info);
  /** Called with what the copy holds when it is dropped. */
  void (*release)(const void* info);
  /** The description of `info`, owned by the caller. */
  const BQString* (*copyDescription)(const void* info);
} BQRunLoopTimerContext;

/**
 * A timer, owned by the caller, that fires first at `fireDate` and then every `interval` seconds;
 * with an interval of 0 or less it fires once and is then invalid. Firings that were missed are not
 * made up. Once created a timer does not follow changes of the system's clock. `flags` and `order`
 * are 0. The context may be null. Null for a null callback or a version other than 0.
 */
BQ_EXPORT BQRunLoopTimer* BQRunLoopTimerCreate(BQAbsoluteTime fireDate, BQTimeInterval interval,
                                               uint32_t flags, BQIndex order, BQRunLoopTimerCallBack callback,
                                               const BQRunLoopTimerContext* context);

/** Takes the timer off its run loop for good. */
BQ_EXPORT void BQRunLoopTimerInvalidate(BQRunLoopTimer* timer);

/** Whether the timer was not invalidated. */
BQ_EXPORT bool BQRunLoopTimerIsValid(const BQRunLoopTimer* timer);

/** When the timer fires next, by the present clock. */
BQ_EXPORT BQAbsoluteTime BQRunLoopTimerGetNextFireDate(const BQRunLoopTimer* timer);

/** Sets when the timer fires next. */
BQ_EXPORT void BQRunLoopTimerSetNextFireDate(BQRunLoopTimer* timer, BQAbsoluteTime fireDate);

/** Adds a timer to a mode, which retains it. A timer belongs to one run loop. */
BQ_EXPORT void BQRunLoopAddTimer(BQRunLoop* runLoop, BQRunLoopTimer* timer, const BQString* mode);

/** Removes a timer from a mode. */
BQ_EXPORT void BQRunLoopRemoveTimer(BQRunLoop* runLoop, BQRunLoopTimer* timer, const BQString* mode);

/** Whether a timer is in a mode. */
BQ_EXPORT bool BQRunLoopContainsTimer(BQRunLoop* runLoop, BQRunLoopTimer* timer, const BQString* mode);

/* File descriptors. */

/** The readiness that is asked for and reported. */
enum {
  /** Bytes, a connection, an end or an error can be read. */
  kBQFileDescriptorRead = 1,
  /** Bytes can be written, or an error be found so. */
  kBQFileDescriptorWrite = 2
};

/** Called while the descriptor is ready, level-triggered; `ready` holds the bits above. */
typedef void (*BQFileDescriptorCallBack)(BQFileDescriptor* descriptor, uint32_t ready, void* info);

/**
 * Watches a file descriptor that stays the caller's and must be removed before it is closed.
 * `interest` holds the bits above and may be 0. A file of a kind that cannot be waited for is always
 * ready. Owned by the caller. Null for a negative `fd` or a null callback.
 */
BQ_EXPORT BQFileDescriptor* BQFileDescriptorCreate(int fd, uint32_t interest,
                                                   BQFileDescriptorCallBack callback, void* info);

/** Changes what is asked for. A descriptor that asks for nothing does not keep a mode from being empty. */
BQ_EXPORT void BQFileDescriptorSetInterest(BQFileDescriptor* descriptor, uint32_t interest);

/** Takes the descriptor off its run loop for good. The fd is not closed. */
BQ_EXPORT void BQFileDescriptorInvalidate(BQFileDescriptor* descriptor);

/** Adds a descriptor to a mode, which retains it. A descriptor belongs to one run loop. */
BQ_EXPORT void BQRunLoopAddFileDescriptor(BQRunLoop* runLoop, BQFileDescriptor* descriptor,
                                          const BQString* mode);

/** Removes a descriptor from a mode. */
BQ_EXPORT void BQRunLoopRemoveFileDescriptor(BQRunLoop* runLoop, BQFileDescriptor* descriptor,
                                             const BQString* mode);

BQ_EXTERN_C_END

#endif
