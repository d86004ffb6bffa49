#pragma once

namespace teralune {

/// While one lives, operator new fails on this thread, from the allocation of that number on; they are
/// counted from 0. SQLite has an allocator of its own and is not touched. A program that links this has its
/// own operator new.
class FailingAllocations {
public:
    explicit FailingAllocations(int number);
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;

    bool haveFailed() const;
};

} // namespace teralune
