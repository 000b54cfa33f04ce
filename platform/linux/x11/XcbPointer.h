// The pointer of an X11 server.
#pragma once

namespace tavo {

// Whether a mouse button is held down, over whichever window: asks the server of Qt's connection.
// False elsewhere than on X11. Main thread, while the application object exists.
[[nodiscard]] bool isXcbButtonHeld();

}  // namespace tavo
