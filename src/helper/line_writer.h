#pragma once

#include <string>

#include "base/json.h"
#include "base/mutex.h"

namespace tandrel {

// Writes one JSON value a line, whole lines only, whichever thread they come from.
class LineWriter {
 public:
    // `output` and `input` are the two ends of the conversation with the app; both stay open
    // longer than this.
    LineWriter(int output, int input);
    // Leaves `output` as it was.
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    // Blocks while the app does not read. An app that is gone, or that has closed its side and
    // reads nothing for a second, gets nothing any more.
    void write(const Json& value);

 private:
    bool awaitRoom() RUNS_ON(mutex_);

    const int output_;
    const int input_;
    const int flags_;                 // of the output's file description, before
    const std::size_t largestPiece_;  // that is written without a wait outside of poll
    Mutex mutex_;
    bool gone_ OWNED_BY(mutex_) = false;
};

}  // namespace tandrel
