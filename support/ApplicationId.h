// The application id.
#pragma once

namespace tavo {

// Desktop-file id, Wayland app id, name of the icon's files and name on the session bus.
inline constexpr char kApplicationId[] = "org.tavolauncher.TavoLauncher";

}  // namespace tavo
