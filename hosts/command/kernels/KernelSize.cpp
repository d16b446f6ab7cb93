#include "hosts/command/kernels/KernelSize.h"

#include "hosts/command/pictures/Orientation.h"

namespace velorn {

KernelSize asStored(KernelSize size, int orientation) {
    return Orientation(orientation).swapsSides() ? KernelSize{size.height, size.width} : size;
}

} // namespace velorn
