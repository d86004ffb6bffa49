#pragma once

namespace teralune {

/// A row of a sectioned table; both count from 0.
struct IndexPath {
    int section = 0;
    int row = 0;

    friend bool operator==(const IndexPath&, const IndexPath&) = default;
};

} // namespace teralune
