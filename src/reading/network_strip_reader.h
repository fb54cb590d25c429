#pragma once

#include "reading/kernels.h"
#include "reading/line_model.h"
#include "reading/strip_reader.h"

namespace tandrel {

// Reads strips by running a line model with our own kernels.
class NetworkStripReader : public StripReader {
 public:
    explicit NetworkStripReader(LineModel model,
                                const Kernels& kernels = *availableKernels().front());

    Result<std::vector<StripText>> read(std::span<const Strip> strips) override;

 private:
    const LineModel model_;
    const Kernels& kernels_;
};

}  // namespace tandrel
