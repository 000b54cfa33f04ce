// The application id.
#pragma once

namespace tavo {

// Desktop-file id, Wayland app id, icon name and name on the session bus, where the object has the
// same name as a path.
inline constexpr char kApplicationId[] = "org.tavolauncher.TavoLauncher";
inline constexpr char kApplicationObjectPath[] = "/org/tavolauncher/TavoLauncher";

}  // namespace tavo
