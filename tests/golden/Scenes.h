// The states of the window whose texts and pictures are approved.
#pragma once

#include <iosfwd>
#include <vector>

namespace tavo {

class Stage;

struct Scene {
    const char* name;         // also the name of its text and picture files
    void (*arrange)(Stage&);  // brings a new stage into that state
    bool everyScale = false;  // pictures at every scale; else at scale 1 only
};

// The name of the scene in messages of GoogleTest.
void PrintTo(const Scene& scene, std::ostream* out);

const std::vector<Scene>& scenes();

}  // namespace tavo
