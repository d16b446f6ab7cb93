#include "hosts/command/pictures/codecThreads.h"

#include <OpenImageIO/imageio.h>

namespace velorn {

void setCodecThreads(int count) {
    OIIO::attribute("threads", count);
    OIIO::attribute("exr_threads", count);
}

} // namespace velorn
