#pragma once

#include <string>
#include <vector>

#include "reading/byte_reader.h"
#include "reading/packed_matrix.h"

namespace tandrel {

// One layer of the network in a traineddata file, in the order in which it is applied. Layers that
// hold others ("Series", "Reversed") are replaced by what they hold, between marks.
struct NetworkLayer {
    std::string kind;  // such as "Convolve", "LSTM"; "(Series" and ")" are marks
    int inputs = 0;
    int outputs = 0;
    PackedMatrix weights;  // empty where the layer has none
};

struct NetworkFile {
    std::vector<NetworkLayer> layers;
    int noLetter = 0;  // the class for "no letter here"
};

// Reads the network component of a traineddata file.
Result<NetworkFile> parseNetwork(std::span<const std::uint8_t> component);

}  // namespace tandrel
