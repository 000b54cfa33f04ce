// The states of the window that have been looked at and approved.
#pragma once

#include <iosfwd>
#include <vector>

namespace tavo {

class Stage;

struct Scene {
    const char* name;         // also of its files
    void (*arrange)(Stage&);  // from a new stage on
    bool everyScale = false;  // else its pictures are of scale 1 only
};

// What the test framework says of one.
void PrintTo(const Scene& scene, std::ostream* out);

const std::vector<Scene>& scenes();

}  // namespace tavo
