#pragma once

#include <cstddef>
#include <iterator>

namespace teralune {

/// The element at the index, or null when the collection has none there; any index may be asked for.
template<class Collection>
auto safeSubscript(Collection& collection, std::ptrdiff_t index) -> decltype(&*std::begin(collection)) {
    if (index < 0 || index >= std::ssize(collection))
        return nullptr;
    return &*std::next(std::begin(collection), index);
}

} // namespace teralune
