#include "platform/linux/windows/TransientRoots.h"

#include <algorithm>

namespace tavo {

std::vector<std::size_t> transientRootsOf(const std::vector<std::size_t>& parents) {
    const std::size_t unknown = parents.size();
    std::vector<std::size_t> transientRoots(parents.size(), unknown);
    std::vector<std::size_t> metOn(parents.size(), unknown);  // the way on which each was met
    std::vector<std::size_t> way;
    for (std::size_t start = 0; start < parents.size(); ++start) {
        way.clear();
        std::size_t place = start;
        for (; transientRoots[place] == unknown && metOn[place] != start; place = parents[place]) {
            metOn[place] = start;
            way.push_back(place);
        }
        const auto circle =
            transientRoots[place] == unknown ? std::find(way.begin(), way.end(), place) : way.end();
        for (auto met = circle; met != way.end(); ++met) {
            transientRoots[*met] = *met;
        }
        for (auto met = way.begin(); met != circle; ++met) {
            transientRoots[*met] = transientRoots[place];
        }
    }
    return transientRoots;
}

}  // namespace tavo
