#pragma once

#include <span>
#include <string>
#include <vector>

#include "base/clock.h"
#include "reading/shared_work.h"
#include "reading/strip_memory.h"

namespace tandrel {

// What became of one line.
struct LineReading {
    StripText text;
    bool wasRead = false;  // false: time ran out first
};

// Reads lines of a frame: from memory where their pixels are known, else in batches by the strip
// reader. Lines that hold digits or a currency sign, short ones and those that are not sure are
// looked at twice, at different scales; where the looks disagree, a third one decides. What is read
// of figures in doubt has at most the confidence kDoubt.
class LineReader {
 public:
    // The most that a line's confidence is when its figures may be wrong or it may be no text.
    static constexpr double kDoubt = 0.45;

    // All must outlive the reader.
    LineReader(StripReader& strips, StripMemory& memory, SharedWork& work, Clock& clock)
        : strips_(strips), memory_(memory), work_(work), clock_(clock) {}

    // One reading for each line, in their order.
    Result<std::vector<LineReading>> read(const GrayFrame& frame, std::span<const Ink> lines,
                                          TimePoint deadline);

 private:
    struct Job;
    static StripText verdict(const Job& job);
    static StripText checked(const Job& job, StripText text);
    static StripText agreed(const Job& job);
    static StripText disputed(const Job& job);
    // Has the jobs' strips read as `which` look says; those that time allows.
    Result<void> look(const GrayFrame& frame, std::vector<Job*>& jobs, int which,
                      TimePoint deadline);

    StripReader& strips_;
    StripMemory& memory_;
    SharedWork& work_;
    Clock& clock_;
};

}  // namespace tandrel
