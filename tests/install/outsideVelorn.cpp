#include <velorn.hpp>

int main() {
    try {
        return velorn::api::Kernel::of(VELORN_BLUR_DISC, 4.0f).width() == 9 ? 0 : 1;
    } catch (const velorn::api::Failure&) {
        return 2;
    }
}
