#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/result.h"
#include "reading/packed_matrix.h"

namespace tandrel {

// A line recogniser as a traineddata file describes it: a 3x3 convolution, the maximum over 3x3
// pixels, an LSTM down each column, three LSTMs along the line (to the right, to the left, to the
// right) and an output layer with one class for each letter and one for "no letter here".
// The four gates of an LSTM are stacked in one matrix: candidate, input, forget, output; its inputs
// are the layer's inputs followed by its own last outputs.
struct LineModel {
    PackedMatrix convolution;  // taps column by column, each column three taps and a gap
    PackedMatrix down;
    PackedMatrix right;
    PackedMatrix left;
    PackedMatrix rightAgain;
    PackedMatrix output;
    std::vector<std::string> letters;  // UTF-8, by class; empty for classes that mean no letter
    int noLetter = 0;
};

inline int lstmSize(const PackedMatrix& gates) { return gates.outputs() / 4; }

// The largest traineddata file that is looked at; Debian's are 1 to 90 MB.
inline constexpr std::size_t kLargestTrainedData = 128 * 1024 * 1024;

// Reads the 8-bit line model out of a traineddata file of Tesseract 4 or 5. A file of another
// network (float weights, other layers, letters of several codes) is an error that says so.
Result<LineModel> parseLineModel(std::span<const std::uint8_t> file);

}  // namespace tandrel
