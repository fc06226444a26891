// StreamedOutput.h - standard output that is written while git runs.
//
//     StreamedOutput stdOut(pagerOfUser);
//     {
//         const StreamedOutput::Reader reader(stdOut, [&] { operation.cancel(); });
//         operation.setRecordSink([&](const NEBSourceControlResult& records) {
//             if (!stdOut.write(textOf(records))) {
//                 operation.cancel();
//             }
//         });
//         operation.start();
//     }
//     stdOut.finish(output);
#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "Platform/Mutex.h"
#include "Platform/Wake.h"
#include "Terminal/CommandOutput.h"
#include "Terminal/IgnoredSignals.h"
#include "Terminal/Pager.h"

namespace neb::nebsc {

/// Writes text to standard output at once. On a terminal, text may go to the user's pager: it is
/// held back until it is more than the terminal shows, or complete, but while a Reader exists not
/// longer than 100 ms. Then the pager shows it as it comes, such as less with its option -F. Not
/// thread-safe unless stated.
class StreamedOutput {
public:
    /// Returns the shell command of the pager; absent if the user wants none.
    using PagerChoice = std::function<std::optional<std::string>()>;

    /// `chooses` is called when a pager is needed, perhaps on another thread during write() or
    /// before the end of the Reader. Empty: no pager is used.
    explicit StreamedOutput(PagerChoice chooses = nullptr);
    StreamedOutput(const StreamedOutput&) = delete;
    StreamedOutput& operator=(const StreamedOutput&) = delete;
    ~StreamedOutput();

    /// Notices while the object exists that no reader is left: the pager was quit, or the program
    /// at the other end of a pipe has ended. Only one object may exist at a time.
    class Reader {
    public:
        /// Calls `left` at most once, on any thread. It must not block.
        Reader(StreamedOutput& output, std::function<void()> left);
        Reader(const Reader&) = delete;
        Reader& operator=(const Reader&) = delete;
        /// Waits for a running `left`; it is not called afterwards.
        ~Reader();

    private:
        StreamedOutput& _output;
    };

    /// Writes the text. Waits for a slow reader. Returns whether more text is wanted: false if no
    /// reader is left, stop() was called, or writing failed.
    [[nodiscard]] bool write(std::string_view text);
    /// Ends a write() that waits while a Reader exists, and makes later ones do nothing.
    /// Thread-safe.
    void stop();
    /// Whether no reader is left. Thread-safe.
    [[nodiscard]] bool hasLostReader() const { return _hasLostReader; }
    /// Whether stop() has ended a write() early or discarded the text of one: what was written may
    /// end in the middle of a line.
    [[nodiscard]] bool hasDiscardedText() const { return _hasDiscardedText; }
    /// Whether the output could not be written.
    [[nodiscard]] bool hasFailed() const { return _failure != 0; }
    /// Writes what is held back, and waits until the user quits the pager. Adds a failure to the
    /// output of the command.
    void finish(CommandOutput& output);

private:
    [[nodiscard]] bool isWanted() const { return !_isStopped && !_hasLostReader && !hasFailed(); }
    [[nodiscard]] bool writeText(std::string_view text);
    void hold(std::string_view text);
    void startHoldTimer();
    void stopHoldTimer();
    void endHoldInTime();
    void openFor(std::string_view text, bool throughPager);
    void openDirectly();
    void openPager(const std::string& command);
    [[nodiscard]] bool writeTo(int descriptor, std::string_view text);
    void writeToPager(std::string_view text);
    void writeDirectly(std::string_view text);
    void endPager();
    void loseReader();
    void startWatching(int descriptor);
    void stopWatching();
    void watch(int descriptor);

    PagerChoice _choosesPager;
    /// Locked by write() and by the thread of the hold timer: everything below, until _mutex.
    Mutex _writing;
    bool _isReaderObserved = false;
    bool _isOpen = false;
    std::string _heldText;
    std::optional<Wake> _endOfHold;
    std::thread _holdTimer;
    std::optional<Pager> _pager;
    std::string _pagerCommand;
    /// What the pager was given, as long as the pipe could hold all of it: a pager that cannot be
    /// executed has not read it.
    std::optional<std::string> _unreadText;
    std::string _diagnostic;
    std::optional<IgnoredSignals> _ignoredSignals;
    int _failure = 0;
    bool _hasDiscardedText = false;
    std::atomic<bool> _hasLostReader = false;
    std::atomic<bool> _isStopped = false;
    Wake _stop;

    Mutex _mutex;
    std::function<void()> _left NEB_GUARDED_BY(_mutex);
    std::optional<Wake> _endOfWatch;
    std::thread _watcher;
};

}  // namespace neb::nebsc
