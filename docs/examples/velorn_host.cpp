// A host of libvelorn in C++: finds out how a photograph was blurred, and restores it.
//
//     velorn_host_cpp blurred.ppm restored.ppm
//
// Pictures are binary PPM files of 8 bits per sample.
#include <velorn.hpp>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace api = velorn::api;

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> samples; // red, green, blue

    VelornPicture view() { return api::pictureOf(samples.data(), width, height, 3); }
};

Picture readPicture(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    std::string format;
    int white = 0;
    Picture picture;
    file >> format >> picture.width >> picture.height >> white;
    if (!file || format != "P6" || white != 255 || picture.width < 1 || picture.height < 1) {
        throw std::runtime_error(name + ": not a PPM file of 8 bits");
    }
    file.get();
    picture.samples.resize(std::size_t{3} * static_cast<std::size_t>(picture.width) *
                           static_cast<std::size_t>(picture.height));
    file.read(reinterpret_cast<char*>(picture.samples.data()),
              static_cast<std::streamsize>(picture.samples.size()));
    if (!file) {
        throw std::runtime_error(name + ": too short");
    }
    return picture;
}

void writePicture(const std::string& name, const Picture& picture) {
    std::ofstream file(name, std::ios::binary);
    file << "P6\n" << picture.width << ' ' << picture.height << "\n255\n";
    file.write(reinterpret_cast<const char*>(picture.samples.data()),
               static_cast<std::streamsize>(picture.samples.size()));
    if (!file.flush()) {
        throw std::runtime_error(name + ": not written");
    }
}

/// A progress function that prints each tenth of a call. A larger host would draw a bar and return
/// false when the user cancels.
api::Progress printTenths(const char* call) {
    return [call, printed = 0](double done) mutable {
        const int tenths = static_cast<int>(10.0 * done);
        if (tenths > printed) {
            printed = tenths;
            std::printf("%s: %d %%\n", call, 10 * tenths);
        }
        return true;
    };
}

api::Kernel findKernel(Picture& picture) {
    const auto [kernel, report] =
        api::findKernel(picture.view(), api::findSettings(), printTenths("search"));
    std::printf("kernel of %d by %d pixels, confidence %.2f\n", kernel.width(), kernel.height(),
                double{report.confidence});
    if (report.confidence < 0.5f) {
        std::puts("warning: the restoration may be worse than the picture");
    }
    return kernel;
}

void run(const std::string& source, const std::string& target) {
    Picture picture = readPicture(source);
    const api::Kernel kernel = findKernel(picture);
    const VelornRestoreReport report =
        api::restore(picture.view(), picture.view(), {kernel}, api::restoreSettings(),
                     printTenths("restoration"));
    std::printf("noise %.2f levels, strength %.0f\n", double{report.noise},
                double{report.strength});
    writePicture(target, picture);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s blurred.ppm restored.ppm\n", argv[0]);
        return 1;
    }
    try {
        run(argv[1], argv[2]);
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
