#include "hosts/command/library/statusText.h"

#include "velorncore10.h"

namespace velorn {

std::string statusText(std::int32_t status) {
    const std::string number = "status " + std::to_string(status);
    switch (status) {
    case VELORN_TEXT_FAILURE:
        return getErrMsg();
    case VELORN_TILE_GAP:
        return "the kernel is too large for the picture's tiles";
    case VELORN_NO_PIXELS:
        return "out of memory, no pixels, or a kernel too large for the tiles (" + number + ")";
    case VELORN_SMOOTHER_MEMORY:
        return "out of memory (" + number + ")";
    case VELORN_FAILURE:
        return "out of memory, or an unknown failure (" + number + ")";
    default:
        return number;
    }
}

} // namespace velorn
