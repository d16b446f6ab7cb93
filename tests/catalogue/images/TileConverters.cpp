#include "velimproclib/catalogue/images/TileConverters.h"

#include "tests/support/EachTarget.h"
#include "tests/support/NullWhenOutOfMemory.h"
#include "tests/support/PixelValues.h"
#include "tests/support/PlaneShapes.h"
#include "velimproclib/primitives/base/failures.h"
#include "velimproclib/primitives/base/Memory.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

namespace {

using namespace vel;
using namespace vel::test;

constexpr float kFormerContent = 3.0f;

/// The formats as the tests define them, independently of the library.
struct Format {
    int code;
    int bytes;    ///< of an element
    int elements; ///< of a pixel
    int first;    ///< first colour

    float level() const { return bytes == 1 ? 1.0f / 256 : 1.0f / 32768; }
    int levels() const { return bytes == 1 ? 256 : 32768; }
    int white() const { return bytes == 1 ? 255 : 32768; }
};

constexpr Format kC3U8{1, 1, 3, 0};
constexpr Format kC3U16{3, 2, 3, 0};
constexpr Format kC4U8{5, 1, 4, 1};
constexpr Format kC4U16{6, 2, 4, 1};
constexpr Format kGreyU8{7, 1, 1, 0};
constexpr Format kGreyU16{8, 2, 1, 0};
constexpr std::array kColourFormats{kC3U8, kC3U16, kC4U8, kC4U16};
constexpr std::array kGreyFormats{kGreyU8, kGreyU16};

/// A host image of any format, with odd steps and starts, and its elements.
class HostImage {
public:
    HostImage(const Format& format, int width, int height, std::mt19937& random)
        : m_format(format),
          m_plane(width * format.elements * format.bytes, height, static_cast<int>(random() % 5),
                  static_cast<int>(random() % 5)) {
        m_plane.fill([&] { return static_cast<std::uint8_t>(random()); });
    }
    void* data() { return m_plane.data(); }
    int step() const { return m_plane.step(); }
    void* pixel(int x, int y) {
        return m_plane.data() + static_cast<std::ptrdiff_t>(y) * step() +
               x * m_format.elements * m_format.bytes;
    }
    int element(int x, int y, int e) const {
        const int i = (x * m_format.elements + e) * m_format.bytes;
        return m_plane.at(i, y) + (m_format.bytes == 2 ? 256 * m_plane.at(i + 1, y) : 0);
    }
    int colour(int x, int y, int c) const { return element(x, y, m_format.first + c); }
    void setElement(int x, int y, int e, int value) {
        const int i = (x * m_format.elements + e) * m_format.bytes;
        m_plane.set(i, y, static_cast<std::uint8_t>(value));
        if (m_format.bytes == 2) {
            m_plane.set(i + 1, y, static_cast<std::uint8_t>(value >> 8));
        }
    }
    bool intact() const { return m_plane.intact(); }

private:
    Format m_format;
    GuardedPlane<std::uint8_t> m_plane;
};

template <class Image>
void fillAll(Image& img, float value) {
    for (int y = 0; y < img.m_height; ++y) {
        std::fill_n(img.row(y), img.m_width * Image::kChannels, value);
    }
}

struct ThreePlanes {
    std::array<std::unique_ptr<GIMG<float>>, 3> owned;
    std::array<GIMG<float>*, 3> pointers{};

    ThreePlanes(int width, int height) {
        for (std::size_t c = 0; c < 3; ++c) {
            owned[c] = std::make_unique<GIMG<float>>(width, height);
            pointers[c] = owned[c].get();
            fillAll(*owned[c], kFormerContent);
        }
    }
    float at(int x, int y, int c) const { return pointers[static_cast<std::size_t>(c)]->row(y)[x]; }
};

/// The place of a tile: at (x, y) in an image, with an overhang to the right and below.
struct Place {
    int tileW, tileH, x, y, padX, padY;

    int imageW() const { return x + tileW - padX; }
    int imageH() const { return y + tileH - padY; }
};

std::vector<Place> places(std::mt19937& random) {
    std::vector<Place> all{
        {1, 1, 0, 0, 0, 0}, {2, 2, 0, 0, 1, 1}, {3, 3, 5, 2, 2, 1}, {32, 8, 10, 3, 22, 0}};
    for (int i = 0; i < 12; ++i) {
        const int w = static_cast<int>(random() % 67) + 1;
        const int h = static_cast<int>(random() % 9) + 1;
        all.push_back({w, h, static_cast<int>(random() % 9), static_cast<int>(random() % 9),
                       static_cast<int>(random() % static_cast<unsigned>(w)),
                       static_cast<int>(random() % static_cast<unsigned>(h))});
    }
    return all;
}

enum class Overhang { kNone, kRepeatedBefore, kRepeatedAfter };

/// The result of a tile routine for one element, by its definition.
float expectedFloat(const Format& format, const HostImage& host, const Place& place,
                    Overhang overhang, bool offset, int x, int y, int c) {
    const int lastX = place.tileW - place.padX - 1;
    const int lastY = place.tileH - place.padY - 1;
    if (overhang == Overhang::kRepeatedAfter && x > lastX && y > lastY) {
        return kFormerContent * format.level();
    }
    const int value = host.colour(place.x + std::min(x, lastX), place.y + std::min(y, lastY), c);
    const float scaled = static_cast<float>(value) * format.level();
    return offset ? scaled + static_cast<float>(static_cast<double>(format.level()) *
                                                static_cast<double>(0.49f))
                  : scaled;
}

template <class At>
void expectTile(const Format& format, const HostImage& host, const Place& place, Overhang overhang,
                bool offset, int channels, At&& at) {
    for (int y = 0; y < place.tileH; ++y) {
        for (int x = 0; x < place.tileW; ++x) {
            for (int c = 0; c < channels; ++c) {
                ASSERT_EQ(at(x, y, c),
                          expectedFloat(format, host, place, overhang, offset, x, y, c))
                    << "format " << format.code << " pixel " << x << ' ' << y << ' ' << c;
            }
        }
    }
}

/// Runs `check(format, place, host)` over formats, places and processor variants.
template <class Formats, class Check>
void overTiles(const Formats& formats, bool withOverhang, Check&& check) {
    std::mt19937 random(1);
    for (const Format& format : formats) {
        for (Place place : places(random)) {
            if (!withOverhang) {
                place.padX = place.padY = 0;
            }
            HostImage host(format, place.imageW(), place.imageH(), random);
            forEachTarget([&] { check(format, place, host); });
            EXPECT_TRUE(host.intact());
        }
    }
}

TEST(TileConverters, ThreeChannelTileHasItsOverhangRepeatedCornerIncludedAndTheOffsetAdded) {
    overTiles(std::array{kC3U8, kC3U16}, true,
              [](const Format& f, const Place& p, HostImage& host) {
                  IMG<float, 3> img(p.tileW, p.tileH);
                  fillAll(img, kFormerContent);
                  ASSERT_EQ(psTileToF32C3Dup(f.code, host.data(), host.step(), p.imageW(),
                                             p.imageH(), p.x, p.y, img),
                            1);
                  EXPECT_EQ(img.m_status, 0);
                  expectTile(f, host, p, Overhang::kRepeatedBefore, true, 3,
                             [&](int x, int y, int c) { return img.row(y)[3 * x + c]; });
              });
}

TEST(TileConverters, ThreeChannelTileOfEveryColourFormat) {
    overTiles(kColourFormats, false, [](const Format& f, const Place& p, HostImage& host) {
        IMG<float, 3> img(p.tileW, p.tileH);
        ASSERT_EQ(psTileToF32C3(f.code, host.data(), host.step(), p.x, p.y, img), 1);
        EXPECT_EQ(img.m_status, 0);
        expectTile(f, host, p, Overhang::kNone, true, 3,
                   [&](int x, int y, int c) { return img.row(y)[3 * x + c]; });
    });
}

TEST(TileConverters, GreyTileHasTheOffsetAdded) {
    overTiles(kGreyFormats, false, [](const Format& f, const Place& p, HostImage& host) {
        GIMG<float> img(p.tileW, p.tileH);
        ASSERT_EQ(psTileToF32Grey(f.code, host.pixel(p.x, p.y), host.step(), img), 1);
        EXPECT_EQ(img.m_status, 0);
        expectTile(f, host, p, Overhang::kNone, true, 1,
                   [&](int x, int y, int) { return img.row(y)[x]; });
    });
}

TEST(TileConverters, RepeatedGreyTileHasNoOffsetAndAnUntouchedCorner) {
    overTiles(kGreyFormats, true, [](const Format& f, const Place& p, HostImage& host) {
        GIMG<float> img(p.tileW, p.tileH);
        fillAll(img, kFormerContent);
        ASSERT_EQ(psTileToF32GreyDup(f.code, host.data(), host.step(), p.imageW(), p.imageH(), p.x,
                                     p.y, img),
                  1);
        EXPECT_EQ(img.m_status, 0);
        expectTile(f, host, p, Overhang::kRepeatedAfter, false, 1,
                   [&](int x, int y, int) { return img.row(y)[x]; });
    });
}

TEST(TileConverters, PlanesOfEveryColourFormatHaveTheOffsetAdded) {
    overTiles(kColourFormats, false, [](const Format& f, const Place& p, HostImage& host) {
        const ThreePlanes planes(p.tileW, p.tileH);
        ASSERT_EQ(psTileToPlanes(f.code, host.pixel(p.x, p.y), host.step(), planes.pointers.data()),
                  1);
        EXPECT_EQ(planes.pointers[2]->m_status, 0);
        expectTile(f, host, p, Overhang::kNone, true, 3,
                   [&](int x, int y, int c) { return planes.at(x, y, c); });
    });
}

TEST(TileConverters, RepeatedPlanesHaveTheCornerIncludedAndTheOffsetAdded) {
    overTiles(std::array{kC3U8, kC3U16}, true,
              [](const Format& f, const Place& p, HostImage& host) {
                  const ThreePlanes planes(p.tileW, p.tileH);
                  ASSERT_EQ(psTileToPlanesDup(f.code, host.data(), host.step(), p.imageW(),
                                              p.imageH(), p.x, p.y, planes.pointers.data()),
                            1);
                  expectTile(f, host, p, Overhang::kRepeatedBefore, true, 3,
                             [&](int x, int y, int c) { return planes.at(x, y, c); });
              });
}

TEST(TileConverters, RawPlanesHaveNoOffsetAndAnUntouchedCorner) {
    overTiles(kColourFormats, true, [](const Format& f, const Place& p, HostImage& host) {
        const ThreePlanes planes(p.tileW, p.tileH);
        ASSERT_EQ(psTileToPlanesDupRaw(f.code, host.data(), host.step(), p.imageW(), p.imageH(),
                                       p.x, p.y, planes.pointers.data()),
                  1);
        expectTile(f, host, p, Overhang::kRepeatedAfter, false, 3,
                   [&](int x, int y, int c) { return planes.at(x, y, c); });
    });
}

TEST(TileConverters, TileTenColumnsFromTheEdgeRepeatsItsTenthColumn) {
    std::mt19937 random(2);
    HostImage host(kC3U8, 100, 8, random);
    IMG<float, 3> img(32, 8);
    ASSERT_EQ(psTileToF32C3Dup(1, host.data(), host.step(), 100, 8, 90, 0, img), 1);
    for (int y = 0; y < 8; ++y) {
        for (int x = 10; x < 32; ++x) {
            for (int c = 0; c < 3; ++c) {
                EXPECT_EQ(img.row(y)[3 * x + c], img.row(y)[27 + c]);
            }
        }
    }
}

TEST(TileConverters, TileBeyondTheImageReadsNothingFromIt) {
    std::mt19937 random(3);
    HostImage host(kC3U8, 40, 40, random);
    HostImage grey(kGreyU8, 40, 40, random);
    for (const int size : {10, 9, 1, 0, -5}) {
        IMG<float, 3> img(8, 8);
        GIMG<float> greyImg(8, 8);
        const ThreePlanes planes(8, 8);
        fillAll(img, kFormerContent);
        fillAll(greyImg, kFormerContent);
        EXPECT_EQ(psTileToF32C3Dup(1, host.data(), host.step(), size, size, 10, 10, img), 1);
        EXPECT_EQ(psTileToF32GreyDup(7, grey.data(), grey.step(), size, size, 10, 10, greyImg), 1);
        EXPECT_EQ(psTileToPlanesDup(1, host.data(), host.step(), size, size, 10, 10,
                                    planes.pointers.data()),
                  1);
        const float offset = static_cast<float>(0.49f / 256.0);
        for (int y = 0; y < 8; ++y) {
            for (int x = 0; x < 8; ++x) {
                EXPECT_EQ(img.row(y)[3 * x], kFormerContent / 256 + offset);
                EXPECT_EQ(greyImg.row(y)[x], kFormerContent / 256);
                EXPECT_EQ(planes.at(x, y, 1), kFormerContent / 256 + offset);
            }
        }
    }
}

TEST(TileConverters, WhiteAndBlackSurviveTheRoundTripWithTheOffset) {
    const std::uint8_t host[6] = {255, 255, 255, 0, 0, 0};
    IMG<float, 3> img(2, 1);
    ASSERT_EQ(psTileToF32C3(1, host, 6, 0, 0, img), 1);
    EXPECT_NEAR(img.row(0)[0], 0.99801, 5e-6);
    EXPECT_NEAR(img.row(0)[3], 0.0019141, 5e-8);
    std::uint8_t back[6] = {7, 7, 7, 7, 7, 7};
    ASSERT_EQ(psTileFromF32C3(img, 1, back, 6), 1);
    EXPECT_TRUE(std::equal(host, host + 6, back));
}

TEST(TileConverters, EveryLevelSurvivesTheRoundTripOnBothScales) {
    for (const Format& format : kGreyFormats) {
        const int count = format.white() + 1;
        std::mt19937 random(4);
        HostImage host(format, count, 1, random);
        HostImage back(format, count, 1, random);
        for (int v = 0; v < count; ++v) {
            host.setElement(v, 0, 0, v);
        }
        GIMG<float> img(count, 1);
        ASSERT_EQ(psTileToF32Grey(format.code, host.data(), host.step(), img), 1);
        ASSERT_EQ(psGreyFromF32(img, format.code, back.data(), back.step()), 1);
        for (int v = 0; v < count; ++v) {
            ASSERT_EQ(back.element(v, 0, 0), v);
        }
    }
}

TEST(TileConverters, ResultOfThePrimitiveInPlaceIsRecordedAndIgnored) {
    constexpr int kBadSize = -6;
    const std::uint8_t host[64] = {};
    std::uint8_t target[64] = {};
    GIMG<float> grey(0, 4);
    IMG<float, 3> colour(4, 0);
    EXPECT_EQ(grey.m_status, 1);
    EXPECT_EQ(psTileToF32Grey(7, host, 4, grey), 1);
    EXPECT_EQ(grey.m_status, kBadSize);
    EXPECT_EQ(psTileToF32C3(1, host, 12, 0, 0, colour), 1);
    EXPECT_EQ(colour.m_status, kBadSize);
    EXPECT_EQ(psGreyFromF32(grey, 7, target, 4), 1);
    EXPECT_EQ(psTileFromF32C3(colour, 1, target, 12), 1);
    EXPECT_TRUE(std::equal(target, target + 64, host));
}

/// Rounded to nearest, ties to even, clamped to the element's range; NaN gives 0.
int rounded(const Format& format, float value) {
    const float scaled = value * static_cast<float>(format.levels());
    const double highest = format.bytes == 1 ? 255.0 : 65535.0;
    const double nearest = std::isnan(scaled) ? 0.0 : std::nearbyint(static_cast<double>(scaled));
    return static_cast<int>(std::clamp(nearest, 0.0, highest));
}

/// Values around the ends of the scale, ties between levels, and NaN.
float randomFloat(const Format& format, std::mt19937& random) {
    switch (random() % 4) {
    case 0:
        return randomPixel<float>(random);
    case 1:
        return (static_cast<float>(random() % 300) + 0.5f) * format.level();
    default:
        return std::uniform_real_distribution<float>(-0.1f, 2.1f)(random);
    }
}

TEST(TileConverters, GreyFloatsAreRoundedAndClampedToWhite) {
    overTiles(kGreyFormats, false, [](const Format& f, const Place& p, HostImage& host) {
        std::mt19937 random(5);
        GIMG<float> img(p.tileW, p.tileH);
        for (int y = 0; y < p.tileH; ++y) {
            std::generate_n(img.row(y), p.tileW, [&] { return randomFloat(f, random); });
        }
        std::vector<int> expected;
        for (int y = 0; y < p.tileH; ++y) {
            for (int x = 0; x < p.tileW; ++x) {
                expected.push_back(std::min(rounded(f, img.row(y)[x]), f.white()));
            }
        }
        ASSERT_EQ(psGreyFromF32(img, f.code, host.pixel(p.x, p.y), host.step()), 1);
        for (int y = 0; y < p.tileH; ++y) {
            for (int x = 0; x < p.tileW; ++x) {
                ASSERT_EQ(host.element(p.x + x, p.y + y, 0),
                          expected[static_cast<std::size_t>(y * p.tileW + x)]);
            }
        }
    });
}

/// Elements of the target tile before and after the call, and the source floats.
struct ColourCase {
    const Format& format;
    const Place& place;
    HostImage before;
    HostImage& after;
    std::vector<float> values;

    float value(int x, int y, int c) const {
        return values[static_cast<std::size_t>((y * place.tileW + x) * 3 + c)];
    }
    int element(const HostImage& host, int x, int y, int e) const {
        return host.element(place.x + x, place.y + y, e);
    }
    /// `isCut(x, e)`: true when element `e` of the tile's pixel `x` is clamped to white.
    template <class IsCut>
    void expect(IsCut&& isCut) const {
        for (int y = 0; y < place.tileH; ++y) {
            for (int x = 0; x < place.tileW; ++x) {
                for (int e = 0; e < format.elements; ++e) {
                    const int held = e < format.first
                                         ? element(before, x, y, e)
                                         : rounded(format, value(x, y, e - format.first));
                    ASSERT_EQ(element(after, x, y, e),
                              isCut(x, e) ? std::min(held, format.white()) : held)
                        << "format " << format.code << " pixel " << x << ' ' << y << ' ' << e;
                }
            }
        }
    }
};

std::vector<float> randomColours(const Format& format, const Place& place) {
    std::mt19937 random(6);
    std::vector<float> values(static_cast<std::size_t>(place.tileW * place.tileH * 3));
    std::generate(values.begin(), values.end(), [&] { return randomFloat(format, random); });
    return values;
}

TEST(TileConverters, ThreeChannelFloatsOfFormatSixAreClampedInThreeQuartersOfTheRowAlphaIncluded) {
    overTiles(kColourFormats, false, [](const Format& f, const Place& p, HostImage& host) {
        const ColourCase tile{f, p, host, host, randomColours(f, p)};
        IMG<float, 3> img(p.tileW, p.tileH);
        for (int y = 0; y < p.tileH; ++y) {
            std::copy_n(&tile.values[static_cast<std::size_t>(y * p.tileW * 3)], 3 * p.tileW,
                        img.row(y));
        }
        ASSERT_EQ(psTileFromF32C3(img, f.code, host.pixel(p.x, p.y), host.step()), 1);
        tile.expect([&](int x, int e) { return f.bytes == 2 && f.elements * x + e < 3 * p.tileW; });
        EXPECT_TRUE(sameFloat(img.row(p.tileH - 1)[0],
                              tile.value(0, p.tileH - 1, 0) * static_cast<float>(f.levels())));
    });
}

TEST(TileConverters, PlanesOfFloatsAreRoundedAndClampedAndAlphaKeepsItsValue) {
    overTiles(kColourFormats, false, [](const Format& f, const Place& p, HostImage& host) {
        const ColourCase tile{f, p, host, host, randomColours(f, p)};
        const ThreePlanes planes(p.tileW, p.tileH);
        for (int y = 0; y < p.tileH; ++y) {
            for (int x = 0; x < p.tileW; ++x) {
                for (int c = 0; c < 3; ++c) {
                    planes.pointers[static_cast<std::size_t>(c)]->row(y)[x] = tile.value(x, y, c);
                }
            }
        }
        ASSERT_EQ(
            psTileFromPlanes(planes.pointers.data(), f.code, host.pixel(p.x, p.y), host.step()), 1);
        tile.expect([&](int, int e) { return f.bytes == 2 && e >= f.first; });
    });
}

TEST(TileConverters, UnsupportedFormatsGiveZeroAndWriteNothing) {
    std::vector<std::uint8_t> host(4096, 9);
    IMG<float, 3> img(4, 4);
    GIMG<float> grey(4, 4);
    const ThreePlanes planes(4, 4);
    fillAll(img, kFormerContent);
    fillAll(grey, kFormerContent);
    void* const data = host.data();
    auto* const* const pointers = planes.pointers.data();
    for (const int format : {-1, 0, 2, 4, 9, 100, 7, 8}) {
        EXPECT_EQ(psTileToF32C3Dup(format, data, 64, 9, 9, 0, 0, img), 0);
        EXPECT_EQ(psTileToF32C3(format, data, 64, 0, 0, img), 0);
        EXPECT_EQ(psTileToPlanes(format, data, 64, pointers), 0);
        EXPECT_EQ(psTileToPlanesDup(format, data, 64, 9, 9, 0, 0, pointers), 0);
        EXPECT_EQ(psTileToPlanesDupRaw(format, data, 64, 9, 9, 0, 0, pointers), 0);
        EXPECT_EQ(psTileFromF32C3(img, format, data, 64), 0);
        EXPECT_EQ(psTileFromPlanes(pointers, format, data, 64), 0);
    }
    for (const int format : {5, 6}) {
        EXPECT_EQ(psTileToF32C3Dup(format, data, 64, 9, 9, 0, 0, img), 0);
        EXPECT_EQ(psTileToPlanesDup(format, data, 64, 9, 9, 0, 0, pointers), 0);
    }
    for (const int format : {-1, 0, 2, 4, 9, 100, 1, 3, 5, 6}) {
        EXPECT_EQ(psTileToF32Grey(format, data, 64, grey), 0);
        EXPECT_EQ(psTileToF32GreyDup(format, data, 64, 9, 9, 0, 0, grey), 0);
        EXPECT_EQ(psGreyFromF32(grey, format, data, 64), 0);
    }
    EXPECT_EQ(host, std::vector<std::uint8_t>(4096, 9));
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            EXPECT_EQ(img.row(y)[3 * x], kFormerContent);
            EXPECT_EQ(grey.row(y)[x], kFormerContent);
            EXPECT_EQ(planes.at(x, y, 2), kFormerContent);
        }
    }
}

/// Owns planes of `psEnsurePlanes`.
struct EnsuredPlanes {
    GIMG<float>* pointers[3] = {nullptr, nullptr, nullptr};

    ~EnsuredPlanes() {
        for (const GIMG<float>* plane : pointers) {
            delete plane;
        }
    }
};

TEST(EnsurePlanes, KeepsPlanesOfTheSizeAndReplacesTheOthers) {
    std::mt19937 random(7);
    HostImage host(kC4U16, 20, 20, random);
    EnsuredPlanes planes;
    EXPECT_EQ(psEnsurePlanes(6, host.data(), host.step(), 0, 0, 3, 2, 6, 4, planes.pointers), 3);
    auto* const first = planes.pointers[0];
    delete planes.pointers[1];
    planes.pointers[1] = new GIMG<float>(6, 5);
    EXPECT_EQ(psEnsurePlanes(6, host.data(), host.step(), 0, 0, 5, 1, 6, 4, planes.pointers), 3);
    EXPECT_EQ(planes.pointers[0], first);
    EXPECT_EQ(planes.pointers[1]->m_height, 4);
    expectTile(kC4U16, host, {6, 4, 5, 1, 0, 0}, Overhang::kNone, true, 3,
               [&](int x, int y, int c) { return planes.pointers[c]->row(y)[x]; });
    EXPECT_EQ(psEnsurePlanes(6, host.data(), host.step(), 0, 0, 0, 0, 3, 3, planes.pointers), 3);
    EXPECT_EQ(planes.pointers[0]->m_width, 3);
}

TEST(EnsurePlanes, ReturnsThreeForAnUnsupportedFormat) {
    const std::uint8_t host[64] = {};
    for (const int format : {2, 7}) {
        EnsuredPlanes planes;
        EXPECT_EQ(psEnsurePlanes(format, host, 8, 0, 0, 0, 0, 2, 2, planes.pointers), 3);
        EXPECT_NE(planes.pointers[2], nullptr);
    }
}

TEST(EnsurePlanes, EntryIsNullAfterExhaustedMemory) {
    const std::uint8_t host[64] = {};
    EnsuredPlanes planes;
    psEnsurePlanes(1, host, 8, 0, 0, 0, 0, 2, 2, planes.pointers);
    EXPECT_THROW(psEnsurePlanes(1, host, 8, 0, 0, 0, 0, 0x7fffffff, 2, planes.pointers), int);
    EXPECT_EQ(planes.pointers[0], nullptr);
    EXPECT_NE(planes.pointers[1], nullptr);
}

TEST(EnsurePlanes, ReplacingAPlaneWithADamagedGuardFailsAndLeavesTheEntryNull) {
    const std::uint8_t host[64] = {};
    EnsuredPlanes planes;
    psEnsurePlanes(1, host, 8, 0, 0, 0, 0, 2, 2, planes.pointers);
    float* const guard = planes.pointers[0]->row(2);
    const std::unique_ptr<std::uint8_t, void (*)(void*)> leftBehind(
        planes.pointers[0]->m_base,
        [](void* block) { vel::alignedFree(static_cast<std::uint8_t*>(block)); });
    guard[0] = 0.0f;
    try {
        psEnsurePlanes(1, host, 8, 0, 0, 0, 0, 3, 2, planes.pointers);
        FAIL() << "nothing was thrown";
    } catch (int failure) {
        EXPECT_EQ(failure, vel::kGuardOverwritten);
    }
    EXPECT_EQ(planes.pointers[0], nullptr);
}

} // namespace
