#pragma once

namespace tandrel {

// How an AI app's settings stand to this copy of Tandrel. An entry that names another copy, or
// nothing that could be run, is `addedElsewhere`.
enum class Link { notAdded, addedHere, addedElsewhere };

constexpr bool added(Link link) { return link != Link::notAdded; }

}  // namespace tandrel
