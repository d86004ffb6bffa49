#pragma once

#include <concepts>
#include <memory>
#include <type_traits>
#include <utility>

namespace teralune {

template<class Signature>
class UniqueFunction;

/// A callable that is owned once and may own move-only things, so that "runs exactly once" can be said with
/// the type: whoever calls it has taken it from whoever held it.
template<class R, class... Arguments>
class UniqueFunction<R(Arguments...)> {
public:
    UniqueFunction() = default;
    UniqueFunction(std::nullptr_t) {}

    template<class Callable>
    requires(!std::same_as<std::remove_cvref_t<Callable>, UniqueFunction> &&
             std::is_invocable_r_v<R, std::decay_t<Callable>&, Arguments...>)
        // The constraint leaves copies and moves to their own constructors.
        // NOLINTNEXTLINE(bugprone-forwarding-reference-overload)
        UniqueFunction(Callable&& callable)
        : held_(std::make_unique<Holder<std::decay_t<Callable>>>(std::forward<Callable>(callable))) {}

    /// An empty one that returns nothing does nothing: whoever gives no completion wants to hear nothing.
    R operator()(Arguments... arguments) {
        if constexpr (std::is_void_v<R>) {
            if (held_ == nullptr) {
                return;
            }
        }
        return held_->call(std::forward<Arguments>(arguments)...);
    }
    explicit operator bool() const { return held_ != nullptr; }

private:
    struct Base {
        virtual ~Base() = default;
        virtual R call(Arguments... arguments) = 0;
    };
    template<class Callable>
    struct Holder final : Base {
        explicit Holder(Callable held) : callable(std::move(held)) {}
        R call(Arguments... arguments) override { return callable(std::forward<Arguments>(arguments)...); }
        Callable callable;
    };

    std::unique_ptr<Base> held_;
};

} // namespace teralune
