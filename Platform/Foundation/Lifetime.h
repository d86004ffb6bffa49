#pragma once

#include <memory>

namespace teralune {

/// Lets completions ask whether the object they belong to is still there. The object holds a Lifetime as a
/// member; a completion holds a watch and looks before it touches the object. Object and completion must
/// share a thread, the main queue above all: the answer holds for as long as the completion runs there.
class Lifetime {
public:
    class Watch {
    public:
        bool isOver() const { return token_.expired(); }

    private:
        friend class Lifetime;
        explicit Watch(std::weak_ptr<const char> token) : token_(std::move(token)) {}
        std::weak_ptr<const char> token_;
    };

    Lifetime() = default;
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;

    Watch watch() const { return Watch(token_); }

private:
    std::shared_ptr<const char> token_ = std::make_shared<const char>('\0');
};

} // namespace teralune
