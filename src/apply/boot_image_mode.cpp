#include "apply/boot_image_mode.h"

#include <cstdlib>

#include "platform/kestrion.h"

bool bootImageMode() { return isOmbrelleAmpere() || std::getenv("bootimage") != nullptr; }
