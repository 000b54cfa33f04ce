// A value that announces each change before it happens.
#pragma once

#include <utility>

#include "support/Signal.h"

namespace tavo {

// Every assignment announces, also one of an equal value: who listens reads everything again
// anyway, and comparing long lists would cost more than redrawing. One thread. Whoever holds the
// value keeps it out of its public interface: reading is for all, changing for the owner.
template<typename Value>
class Published {
public:
    Published(Signal<>& willChange, Value value)
        : willChange_(willChange), value_(std::move(value)) {}

    const Value& operator*() const { return value_; }
    const Value* operator->() const { return &value_; }

    void set(Value value) {
        willChange_.emit();
        value_ = std::move(value);
    }

    // `edit` gets the value to change in place.
    template<typename Edit>
    void change(Edit&& edit) {
        willChange_.emit();
        std::forward<Edit>(edit)(value_);
    }

private:
    Signal<>& willChange_;
    Value value_;
};

}  // namespace tavo
