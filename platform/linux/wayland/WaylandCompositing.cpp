#include "platform/linux/wayland/WaylandCompositing.h"

namespace tavo {
namespace {

class WaylandCompositing final : public Compositing {
public:
    bool active() const override { return true; }
    bool blurs() const override { return false; }
    void blurBehind(std::uintptr_t /*window*/, const std::vector<PixelRect>& /*region*/) override {}
};

}  // namespace

std::unique_ptr<Compositing> makeWaylandCompositing() {
    return std::make_unique<WaylandCompositing>();
}

}  // namespace tavo
