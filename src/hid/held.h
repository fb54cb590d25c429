#pragma once

#include <array>
#include <vector>

#include "hid/report.h"

namespace tandrel {

// What a phone was last told is pressed, so that it can be let go whatever happens.
class Held {
 public:
    void note(const Report& report) { down_[slot(report.id)] = holdsDown(report); }

    // The reports that let go of everything pressed; nothing for none.
    std::vector<Report> release() const {
        std::vector<Report> reports;
        for (const ReportID id : kReportIDs) {
            if (down_[slot(id)]) reports.push_back(releasedReport(id));
        }
        return reports;
    }

 private:
    static std::size_t slot(ReportID id) { return static_cast<std::size_t>(id) - 1; }

    std::array<bool, kReportIDs.size()> down_{};
};

}  // namespace tandrel
