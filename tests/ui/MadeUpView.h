// The content of the window over a made-up model.
#pragma once

#include <memory>

#include "tests/catalogue/ModelHarness.h"
#include "tests/fakes/FakeIconSource.h"
#include "ui/window/LauncherView.h"

namespace tavo {

// Makes the view, in Italian and not yet shown. `world` and `icons` outlive it.
inline std::unique_ptr<LauncherView> makeMadeUpView(ModelHarness& world, FakeIconSource& icons) {
    return std::make_unique<LauncherView>(
        LauncherView::World{.platform = world.platform(),
                            .text = TextRules("it_IT"),
                            .icons = std::shared_ptr<IconSource>(std::shared_ptr<void>(), &icons),
                            .mainQueue = world.mainQueue},
        nullptr);
}

}  // namespace tavo
