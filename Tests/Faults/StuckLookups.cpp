#include "Tests/Faults/StuckLookups.h"

#include <condition_variable>
#include <dlfcn.h>
#include <mutex>
#include <netdb.h>
#include <string_view>

namespace teralune {
namespace {

struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::size_t stuck = 0;
    std::size_t releases = 0;
};

/// Never destroyed: a lookup may hang while the program ends.
State& state() {
    static State& shared = *new State;
    return shared;
}

} // namespace

void StuckLookups::waitFor(std::size_t count) {
    std::unique_lock lock(state().mutex);
    state().changed.wait(lock, [count] { return state().stuck >= count; });
}

void StuckLookups::releaseAll() {
    std::unique_lock lock(state().mutex);
    ++state().releases;
    state().changed.notify_all();
    state().changed.wait(lock, [] { return state().stuck == 0; });
}

} // namespace teralune

/// libcurl finds this one, for the program comes before the system's library.
extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** found) {
    if (name == nullptr || !std::string_view(name).ends_with(".stuck.test")) {
        using Lookup = decltype(&getaddrinfo);
        static const auto system = reinterpret_cast<Lookup>(dlsym(RTLD_NEXT, "getaddrinfo"));
        return system(name, service, hints, found);
    }
    teralune::State& state = teralune::state();
    std::unique_lock lock(state.mutex);
    ++state.stuck;
    state.changed.notify_all();
    state.changed.wait(lock, [&state, before = state.releases] { return state.releases != before; });
    --state.stuck;
    state.changed.notify_all();
    return EAI_NONAME;
}
