#include "Tests/Classes/Model/CoreData/FailingAllocations.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local bool isActive = false;
thread_local int allocationsLeft = 0;
thread_local bool hasFailed = false;

} // namespace

void* operator new(std::size_t size) {
    if (isActive && allocationsLeft-- <= 0) {
        hasFailed = true;
        throw std::bad_alloc();
    }
    if (void* const memory = std::malloc(size > 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace teralune {

FailingAllocations::FailingAllocations(int number) {
    allocationsLeft = number;
    hasFailed = false;
    isActive = true;
}

FailingAllocations::~FailingAllocations() {
    isActive = false;
}

bool FailingAllocations::haveFailed() const {
    return hasFailed;
}

} // namespace teralune
