#include "reading/components.h"

#include <cstring>
#include <numeric>

namespace tandrel {

namespace {

struct Run {
    int row;
    int left;
    int right;
};

// Appends the runs of one row.
void appendRuns(const std::uint8_t* row, int columns, int y, std::vector<Run>& runs) {
    for (int x = 0; x < columns;) {
        const void* next = std::memchr(row + x, 1, static_cast<std::size_t>(columns - x));
        if (!next) return;
        const int left = static_cast<int>(static_cast<const std::uint8_t*>(next) - row);
        x = left;
        while (x < columns && row[x]) ++x;
        runs.push_back({y, left, x});
    }
}

PixelBox middleOf(const PixelBox& box) {
    const int across = box.width() * 30 / 100, down = box.height() * 35 / 100;
    return {box.left + across, box.top + down, box.right - across, box.bottom - down};
}

}  // namespace

JoinedGroups::JoinedGroups(int count) : parents_(static_cast<std::size_t>(count)) {
    std::iota(parents_.begin(), parents_.end(), 0);
}

int JoinedGroups::groupOf(int index) {
    while (parents_[index] != index) {
        parents_[index] = parents_[parents_[index]];
        index = parents_[index];
    }
    return index;
}

void JoinedGroups::join(int first, int second) {
    const int a = groupOf(first), b = groupOf(second);
    parents_[std::max(a, b)] = std::min(a, b);
}

int JoinedGroups::add() {
    parents_.push_back(static_cast<int>(parents_.size()));
    return parents_.back();
}

std::vector<Component> connectedComponents(const std::uint8_t* mask, int columns, int rows) {
    std::vector<Run> runs;
    JoinedGroups groups(0);
    std::size_t above = 0, aboveEnd = 0;
    for (int y = 0; y < rows; ++y) {
        const std::size_t first = runs.size();
        appendRuns(mask + static_cast<std::size_t>(y) * columns, columns, y, runs);
        for (std::size_t i = first; i < runs.size(); ++i) {
            groups.add();
            while (above < aboveEnd && runs[above].right < runs[i].left) ++above;
            for (std::size_t j = above; j < aboveEnd && runs[j].left <= runs[i].right; ++j) {
                groups.join(static_cast<int>(j), static_cast<int>(i));
            }
        }
        above = first;
        aboveEnd = runs.size();
    }
    std::vector<int> indexOf(runs.size(), -1);
    std::vector<Component> components;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const Run& run = runs[i];
        const PixelBox box{run.left, run.row, run.right, run.row + 1};
        int& index = indexOf[groups.groupOf(static_cast<int>(i))];
        if (index < 0) {
            index = static_cast<int>(components.size());
            components.push_back({box, 0, 0});
        }
        components[index].box.include(box);
        components[index].area += box.width();
    }
    for (std::size_t i = 0; i < runs.size(); ++i) {
        Component& component = components[indexOf[groups.groupOf(static_cast<int>(i))]];
        const PixelBox middle = middleOf(component.box);
        const PixelBox run{runs[i].left, runs[i].row, runs[i].right, runs[i].row + 1};
        const PixelBox shared = run.intersected(middle);
        if (!shared.empty()) component.centre += shared.width();
    }
    return components;
}

}  // namespace tandrel
