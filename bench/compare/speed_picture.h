// Speed over the stretch factor, each mode and each linked peer, as a PNG file's contents.
#pragma once

#include <string>

std::string SpeedPicture();
