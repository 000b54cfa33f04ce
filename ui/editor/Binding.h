// Reads and changes a value that is stored elsewhere.
#pragma once

#include <functional>

namespace tavo {

// `get` returns the value for a field to show, `set` stores what the user typed. What they do when
// the value no longer exists is up to the code that makes the binding.
template<typename Value>
struct Binding {
    std::function<Value()> get;
    std::function<void(Value)> set;
};

}  // namespace tavo
