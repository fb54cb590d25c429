#pragma once

#include <memory>
#include <vector>

#include "base/mutex.h"
#include "reading/kernels.h"
#include "reading/line_model.h"
#include "reading/network_runner.h"
#include "reading/strip_reader.h"

namespace tandrel {

// Reads strips by running a line model with our own kernels.
class NetworkStripReader : public StripReader {
 public:
    explicit NetworkStripReader(LineModel model,
                                const Kernels& kernels = *availableKernels().front());

    Result<std::vector<StripText>> read(std::span<const Strip> strips) override;

 private:
    using Runner = std::unique_ptr<NetworkRunner>;
    // Runners are kept for their scratch memory, which is dear to get from the system anew.
    Runner take();
    void giveBack(Runner runner);

    const LineModel model_;
    const Kernels& kernels_;
    Mutex mutex_;
    std::vector<Runner> idle_ OWNED_BY(mutex_);
};

}  // namespace tandrel
