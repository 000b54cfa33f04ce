// The favourites: paths of applications, kept in the defaults store and nowhere else.
#pragma once

#include <string>
#include <unordered_set>

namespace tavo {

class DefaultsStore;

// A set of application paths, compared byte by byte.
using PathSet = std::unordered_set<std::string>;

// Every access reads the store, so a change made by anybody else is seen at once. It announces
// nothing: the model does, after toggling. Main thread.
class Favorites {
public:
    // The one that the program uses. It needs a store before it is first asked.
    static Favorites& shared();

    // Gives the store to read and write from now on; it must outlive the use.
    void use(DefaultsStore& store) { store_ = &store; }

    // The paths as stored now; none when nothing readable is stored.
    [[nodiscard]] PathSet urls() const;

    // Adds the path, or removes it when it is there. On disk when it returns, unless the store was
    // refused.
    void toggle(const std::string& path);

private:
    DefaultsStore* store_ = nullptr;
};

}  // namespace tavo
