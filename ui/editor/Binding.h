// A value that lives elsewhere, to be read and changed in place.
#pragma once

#include <functional>

namespace tavo {

// What a field shows and where what is typed into it goes. Whoever makes it says what happens when
// the value is gone.
template<typename Value>
struct Binding {
    std::function<Value()> get;
    std::function<void(Value)> set;
};

}  // namespace tavo
