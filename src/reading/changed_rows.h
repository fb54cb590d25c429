#pragma once

#include <vector>

namespace tandrel {

// Which rows of a frame differ from the frame before.
class ChangedRows {
 public:
    // `changed` has one entry for each row.
    explicit ChangedRows(const std::vector<bool>& changed) : before_{0} {
        for (const bool row : changed) before_.push_back(before_.back() + row);
    }
    static ChangedRows all(int rows) {
        return ChangedRows(std::vector<bool>(static_cast<std::size_t>(rows), true));
    }

    // Whether any of the rows from `top` to before `bottom` changed; they lie on the frame.
    bool any(int top, int bottom) const { return before_[bottom] > before_[top]; }
    bool at(int row) const { return any(row, row + 1); }
    int count() const { return before_.back(); }

 private:
    std::vector<int> before_;  // how many rows above each row changed
};

}  // namespace tandrel
