#include "platform/linux/camera/FrameDecoder.h"
#include "platform/linux/camera/RawVideo.h"

#include "tests/platform/camera/CameraWorld.h"

#include <gmock/gmock.h>
#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <random>

namespace {

using LinuxPlatform::FrameDecoder;
using LinuxPlatform::JpegCodec;
using LinuxPlatform::PixelLayout;
using LinuxPlatform::VideoFormat;
using LinuxPlatform::VideoFrame;
using LinuxPlatform::VideoPlane;
using TestSupport::isNear;
using TestSupport::pixelOf;
using TestSupport::Rgb;
using TestSupport::showsBars;

using Bytes = std::vector<std::byte>;

constexpr std::array<Rgb, 4> barColors{{{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {128, 128, 128}}};

std::byte byteOf(int value) {
    return static_cast<std::byte>(value);
}

Rgb barAt(int x, int width) {
    return barColors[static_cast<std::size_t>(x * 4 / width)];
}

struct Yuv {
    int y = 0;
    int u = 0;
    int v = 0;
};

Yuv yuvOf(const Rgb& c) {
    return {16 + (66 * c.red + 129 * c.green + 25 * c.blue + 128) / 256,
            128 + (-38 * c.red - 74 * c.green + 112 * c.blue + 128) / 256,
            128 + (112 * c.red - 94 * c.green - 18 * c.blue + 128) / 256};
}

/// The bars as each layout has them, with `gap` more bytes in a row than needed.
Bytes packedBars(PixelLayout layout, int width, int height, int gap = 0) {
    Bytes data;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto color = barAt(x, width);
            const auto yuv = yuvOf(color);
            const auto chroma = x % 2 == 0 ? yuv.u : yuv.v;
            switch (layout) {
            case PixelLayout::yuyv:
                data.insert(data.end(), {byteOf(yuv.y), byteOf(chroma)});
                break;
            case PixelLayout::uyvy:
                data.insert(data.end(), {byteOf(chroma), byteOf(yuv.y)});
                break;
            case PixelLayout::bgrx:
                data.insert(data.end(),
                            {byteOf(color.blue), byteOf(color.green), byteOf(color.red), std::byte{0}});
                break;
            case PixelLayout::rgbx:
                data.insert(data.end(),
                            {byteOf(color.red), byteOf(color.green), byteOf(color.blue), std::byte{0}});
                break;
            case PixelLayout::bgr:
                data.insert(data.end(), {byteOf(color.blue), byteOf(color.green), byteOf(color.red)});
                break;
            case PixelLayout::rgb:
                data.insert(data.end(), {byteOf(color.red), byteOf(color.green), byteOf(color.blue)});
                break;
            default:
                data.push_back(byteOf(yuv.y));
                break;
            }
        }
        data.insert(data.end(), static_cast<std::size_t>(gap), std::byte{0xAA});
    }
    return data;
}

struct ChromaPlanes {
    Bytes blue;
    Bytes red;
    Bytes both;
};

ChromaPlanes chromaBars(int width, int height) {
    ChromaPlanes planes;
    for (int y = 0; y < (height + 1) / 2; ++y) {
        for (int x = 0; x < (width + 1) / 2; ++x) {
            const auto yuv = yuvOf(barAt(x * 2, width));
            planes.blue.push_back(byteOf(yuv.u));
            planes.red.push_back(byteOf(yuv.v));
            planes.both.insert(planes.both.end(), {byteOf(yuv.u), byteOf(yuv.v)});
        }
    }
    return planes;
}

Bytes joined(const std::vector<Bytes>& parts) {
    Bytes all;
    for (const auto& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

VideoFrame frameOf(PixelLayout layout, int width, int height, const Bytes& data, int stride = 0) {
    return {{layout, width, height}, {VideoPlane{data, stride}}};
}

std::shared_ptr<Platform::Picture> barsPicture(int width, int height) {
    auto picture = std::make_shared<Platform::Picture>();
    picture->width = width;
    picture->height = height;
    picture->pixels = packedBars(PixelLayout::bgrx, width, height);
    return picture;
}

Bytes jpegBars(int width, int height) {
    return *JpegCodec().encode(*barsPicture(width, height));
}

constexpr std::array packedLayouts{PixelLayout::yuyv, PixelLayout::uyvy, PixelLayout::bgrx,
                                   PixelLayout::rgbx, PixelLayout::bgr,  PixelLayout::rgb};

TEST(RawVideoTest, PackedLayoutsHaveTheirColors) {
    for (const auto layout : packedLayouts) {
        for (const int reduction : {1, 2, 4, 8}) {
            const auto data = packedBars(layout, 64, 32);
            const auto picture = pictureOfRawFrame(frameOf(layout, 64, 32, data), reduction);
            ASSERT_TRUE(picture) << int(layout);
            EXPECT_EQ(picture->width, 64 / reduction);
            EXPECT_EQ(picture->height, 32 / reduction);
            EXPECT_TRUE(showsBars(*picture)) << int(layout) << " by " << reduction;
        }
    }
}

TEST(RawVideoTest, RowsMayHaveGaps) {
    for (const auto layout : packedLayouts) {
        const int pixelSize = layout == PixelLayout::yuyv || layout == PixelLayout::uyvy ? 2
                              : layout == PixelLayout::bgr || layout == PixelLayout::rgb ? 3
                                                                                         : 4;
        const auto data = packedBars(layout, 64, 32, 12);
        const auto picture = pictureOfRawFrame(frameOf(layout, 64, 32, data, 64 * pixelSize + 12), 1);
        ASSERT_TRUE(picture);
        EXPECT_TRUE(showsBars(*picture)) << int(layout);
    }
}

TEST(RawVideoTest, PlanarLayoutsMayBeInOnePieceOrInSeveral) {
    const auto luma = packedBars(PixelLayout::gray, 64, 32);
    const auto chroma = chromaBars(64, 32);
    const auto nv12 = joined({luma, chroma.both});
    const auto yuv420 = joined({luma, chroma.blue, chroma.red});
    const VideoFormat twoPlanes{PixelLayout::nv12, 64, 32};
    const VideoFormat threePlanes{PixelLayout::yuv420, 64, 32};
    for (const int reduction : {1, 2, 4, 8}) {
        for (const auto& frame :
             {VideoFrame{twoPlanes, {VideoPlane{nv12}}},
              VideoFrame{twoPlanes, {VideoPlane{luma}, VideoPlane{chroma.both}}},
              VideoFrame{threePlanes, {VideoPlane{yuv420, 64}}},
              VideoFrame{threePlanes, {VideoPlane{luma}, VideoPlane{chroma.blue}, VideoPlane{chroma.red}}},
              // Some producers say of every plane what is true of the first.
              VideoFrame{threePlanes,
                         {VideoPlane{luma, 64}, VideoPlane{chroma.blue, 64}, VideoPlane{chroma.red, 64}}}}) {
            const auto picture = pictureOfRawFrame(frame, reduction);
            ASSERT_TRUE(picture);
            EXPECT_TRUE(showsBars(*picture)) << int(frame.format.layout) << " by " << reduction;
        }
    }
}

TEST(RawVideoTest, BlackAndWhiteAreExact) {
    for (const auto& [luma, shade] :
         {std::pair{16, 0}, std::pair{235, 255}, std::pair{0, 0}, std::pair{255, 255}}) {
        const Bytes data{byteOf(luma), byteOf(128), byteOf(luma), byteOf(128)};
        const auto picture = pictureOfRawFrame(frameOf(PixelLayout::yuyv, 2, 1, data), 1);
        ASSERT_TRUE(picture);
        EXPECT_TRUE(isNear(pixelOf(*picture, 0, 0), {shade, shade, shade}, 1)) << luma;
    }
}

TEST(RawVideoTest, EveryLumaAndChromaStaysInRange) {
    for (int luma = 0; luma < 256; luma += 5) {
        for (int blue = 0; blue < 256; blue += 5) {
            for (int red = 0; red < 256; red += 5) {
                const Bytes data{byteOf(luma), byteOf(blue), byteOf(luma), byteOf(red)};
                const auto pixel =
                    pixelOf(*pictureOfRawFrame(frameOf(PixelLayout::yuyv, 2, 1, data), 1), 0, 0);
                const double y = 1.164 * (luma - 16);
                const Rgb exact{
                    static_cast<int>(std::clamp(y + 1.596 * (red - 128), 0.0, 255.0)),
                    static_cast<int>(std::clamp(y - 0.391 * (blue - 128) - 0.813 * (red - 128), 0.0, 255.0)),
                    static_cast<int>(std::clamp(y + 2.018 * (blue - 128), 0.0, 255.0))};
                ASSERT_TRUE(isNear(pixel, exact, 4)) << luma << " " << blue << " " << red;
            }
        }
    }
}

/// Against the recommendations' own equations, for every luma and many chromas.
TEST(RawVideoTest, ColorsOfEveryRangeAndMatrixAreNearTheExactOnes) {
    using LinuxPlatform::ColorMatrix;
    using LinuxPlatform::ColorRange;
    for (const auto matrix : {ColorMatrix::bt601, ColorMatrix::bt709}) {
        const double kr = matrix == ColorMatrix::bt601 ? 0.299 : 0.2126;
        const double kb = matrix == ColorMatrix::bt601 ? 0.114 : 0.0722;
        const double kg = 1 - kr - kb;
        for (const auto range : {ColorRange::limited, ColorRange::full}) {
            const bool isFull = range == ColorRange::full;
            double worst = 0;
            for (int u = 0; u < 256; u += 5) {
                for (int v = 0; v < 256; v += 5) {
                    Bytes data;
                    for (int y = 0; y < 256; ++y) {
                        data.insert(data.end(), {byteOf(y), byteOf(y % 2 == 0 ? u : v)});
                    }
                    auto frame = frameOf(PixelLayout::yuyv, 256, 1, data);
                    frame.format.range = range;
                    frame.format.matrix = matrix;
                    const auto picture = LinuxPlatform::pictureOfRawFrame(frame, 1);
                    ASSERT_TRUE(picture);
                    for (int y = 0; y < 256; ++y) {
                        const double luma = isFull ? y : (y - 16) * 255.0 / 219;
                        const double blue = (u - 128) * (isFull ? 1 : 255.0 / 224);
                        const double red = (v - 128) * (isFull ? 1 : 255.0 / 224);
                        const double r = luma + 2 * (1 - kr) * red;
                        const double b = luma + 2 * (1 - kb) * blue;
                        const double g = luma - 2 * kr * (1 - kr) / kg * red - 2 * kb * (1 - kb) / kg * blue;
                        const auto pixel = pixelOf(*picture, y, 0);
                        worst = std::max({worst, std::abs(pixel.red - std::clamp(r, 0.0, 255.0)),
                                          std::abs(pixel.green - std::clamp(g, 0.0, 255.0)),
                                          std::abs(pixel.blue - std::clamp(b, 0.0, 255.0))});
                    }
                }
            }
            EXPECT_LE(worst, 2) << "full range: " << isFull << ", matrix " << static_cast<int>(matrix);
        }
    }
}

/// What is done to the picture of three colours in two rows is undone.
TEST(FrameDecoderTest, PicturesAndPhotosAreUpright) {
    using LinuxPlatform::Orientation;
    constexpr int width = 48;
    constexpr int height = 32;
    const auto colorAt = [&](int x, int y) {
        return barColors[static_cast<std::size_t>(x / 16 + (y / 16) * 2) % 4];
    };
    for (const bool isMirrored : {false, true}) {
        for (int turns = 0; turns < 4; ++turns) {
            const Orientation orientation{isMirrored, turns};
            const bool isOnItsSide = turns % 2 != 0;
            const int storedWidth = isOnItsSide ? height : width;
            const int storedHeight = isOnItsSide ? width : height;
            Bytes stored(static_cast<std::size_t>(width * height) * 4);
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    // Mirrored first, then turned counter-clockwise a quarter at a time.
                    int toX = isMirrored ? width - 1 - x : x;
                    int toY = y;
                    int w = width;
                    int h = height;
                    for (int turn = 0; turn < turns; ++turn) {
                        const int turnedX = toY;
                        toY = w - 1 - toX;
                        toX = turnedX;
                        std::swap(w, h);
                    }
                    const auto color = colorAt(x, y);
                    auto* pixel = &stored[static_cast<std::size_t>(toY * storedWidth + toX) * 4];
                    pixel[0] = byteOf(color.blue);
                    pixel[1] = byteOf(color.green);
                    pixel[2] = byteOf(color.red);
                }
            }
            auto frame = frameOf(PixelLayout::bgrx, storedWidth, storedHeight, stored);
            frame.orientation = orientation;
            const auto isRight = [&](const Platform::Picture& picture, int tolerance) {
                bool isSame = picture.width == width && picture.height == height;
                for (int y = 8; y < height && isSame; y += 16) {
                    for (int x = 8; x < width && isSame; x += 16) {
                        isSame = isNear(pixelOf(picture, x, y), colorAt(x, y), tolerance);
                    }
                }
                return isSame;
            };
            FrameDecoder decoder;
            const auto picture = decoder.picture(frame, width, height);
            ASSERT_TRUE(picture);
            EXPECT_TRUE(isRight(*picture, 0)) << isMirrored << turns;
            const auto photo = decoder.photo(frame);
            ASSERT_TRUE(photo);
            EXPECT_TRUE(isRight(*JpegCodec().decode(*photo, 1).picture, 2)) << isMirrored << turns;
            // The same as JPEG, whose bytes lie on their side as well.
            Platform::Picture asStored;
            asStored.width = storedWidth;
            asStored.height = storedHeight;
            asStored.pixels = stored;
            const auto jpeg = JpegCodec().encode(asStored);
            auto jpegFrame = frameOf(PixelLayout::jpeg, storedWidth, storedHeight, *jpeg);
            jpegFrame.orientation = orientation;
            const auto jpegPhoto = decoder.photo(jpegFrame);
            ASSERT_TRUE(jpegPhoto);
            EXPECT_EQ(*jpegPhoto == *jpeg, orientation.isUpright()) << "unchanged where it is upright";
            EXPECT_TRUE(isRight(*JpegCodec().decode(*jpegPhoto, 1).picture, 4)) << isMirrored << turns;
        }
    }
}

TEST(RawVideoTest, OddSizesAreTaken) {
    for (const auto layout :
         {PixelLayout::yuyv, PixelLayout::nv12, PixelLayout::yuv420, PixelLayout::gray, PixelLayout::bgr}) {
        for (int width = 1; width < 20; ++width) {
            for (int height = 1; height < 6; ++height) {
                const Bytes data(static_cast<std::size_t>((width + 1) * (height + 1) * 4), std::byte{128});
                for (const int reduction : {1, 2, 4}) {
                    const auto picture = pictureOfRawFrame(frameOf(layout, width, height, data), reduction);
                    EXPECT_EQ(picture != nullptr, width >= reduction && height >= reduction);
                }
            }
        }
    }
}

TEST(RawVideoTest, FramesThatAreTooSmallAreNone) {
    for (const auto layout :
         {PixelLayout::yuyv, PixelLayout::uyvy, PixelLayout::nv12, PixelLayout::yuv420, PixelLayout::gray,
          PixelLayout::bgrx, PixelLayout::rgbx, PixelLayout::bgr, PixelLayout::rgb}) {
        const auto luma = packedBars(layout, 64, 32);
        const auto whole = joined({luma, chromaBars(64, 32).both});
        const bool isPlanar = layout == PixelLayout::nv12 || layout == PixelLayout::yuv420;
        const auto enough = isPlanar ? whole.size() : luma.size();
        EXPECT_TRUE(pictureOfRawFrame(
            frameOf(layout, 64, 32, Bytes(whole.begin(), whole.begin() + std::ptrdiff_t(enough))), 1));
        const Bytes cut(whole.begin(), whole.begin() + std::ptrdiff_t(enough) - 1);
        EXPECT_FALSE(pictureOfRawFrame(frameOf(layout, 64, 32, cut), 1)) << int(layout);
        EXPECT_FALSE(pictureOfRawFrame(frameOf(layout, 64, 32, Bytes{}), 1));
        EXPECT_FALSE(pictureOfRawFrame(frameOf(layout, 64, 32, whole, 3), 1)) << "rows that overlap";
    }
}

TEST(RawVideoTest, ImpossibleSizesAreNone) {
    const Bytes data(1024, std::byte{0});
    for (const auto& [width, height] : {std::pair{0, 0}, std::pair{0, 8}, std::pair{8, 0}, std::pair{-8, 8},
                                        std::pair{16384, 1}, std::pair{1, 16384}, std::pair{8192, 8192}}) {
        EXPECT_FALSE(pictureOfRawFrame(frameOf(PixelLayout::gray, width, height, data), 1));
    }
}

TEST(FrameDecoderTest, PictureIsAsSmallAsItMayBe) {
    FrameDecoder decoder;
    const auto jpeg = jpegBars(1280, 720);
    const auto raw = packedBars(PixelLayout::yuyv, 1280, 720);
    for (const auto& frame :
         {frameOf(PixelLayout::jpeg, 1280, 720, jpeg), frameOf(PixelLayout::yuyv, 1280, 720, raw)}) {
        const auto widthFor = [&](int width, int height) {
            return decoder.picture(frame, width, height)->width;
        };
        EXPECT_EQ(widthFor(332, 187), 320) << "all but a sixteenth is enough";
        EXPECT_EQ(widthFor(341, 192), 320);
        EXPECT_EQ(widthFor(342, 192), 640);
        EXPECT_EQ(widthFor(341, 193), 640);
        EXPECT_EQ(widthFor(640, 360), 640);
        EXPECT_EQ(widthFor(332, 400), 1280) << "the height counts, too";
        EXPECT_EQ(widthFor(320, 180), 320);
        EXPECT_EQ(widthFor(16, 9), 160);
        EXPECT_EQ(widthFor(4000, 3000), 1280) << "never larger than the frame";
        EXPECT_TRUE(showsBars(*decoder.picture(frame, 332, 187)));
    }
}

TEST(FrameDecoderTest, PhotoOfJpegIsTheSameBytes) {
    auto jpeg = jpegBars(320, 180);
    // Some cameras fill their buffers up behind the end.
    jpeg.insert(jpeg.end(), 100, std::byte{0});
    FrameDecoder decoder;
    EXPECT_EQ(decoder.photo(frameOf(PixelLayout::jpeg, 320, 180, jpeg)), jpeg);
}

/// The segments of a JPEG in front of its first scan, by their markers.
std::vector<std::pair<int, Bytes>> segmentsOf(const Bytes& jpeg) {
    std::vector<std::pair<int, Bytes>> segments;
    std::size_t at = 2;
    while (segments.empty() || segments.back().first != 0xDA) {
        const auto length = std::to_integer<std::size_t>(jpeg.at(at + 2)) * 256 +
                            std::to_integer<std::size_t>(jpeg.at(at + 3)) + 2;
        const auto begin = jpeg.begin() + static_cast<std::ptrdiff_t>(at);
        segments.emplace_back(std::to_integer<int>(jpeg.at(at + 1)),
                              Bytes(begin, begin + static_cast<std::ptrdiff_t>(length)));
        at += length;
    }
    return segments;
}

TEST(FrameDecoderTest, PhotoOfAJpegWithoutHuffmanTablesHasTheStandardOnes) {
    const auto whole = jpegBars(320, 180);
    Bytes bare(whole.begin(), whole.begin() + 2);
    std::size_t header = 2;
    for (const auto& [marker, segment] : segmentsOf(whole)) {
        header += segment.size();
        if (marker != 0xC4) {
            bare.insert(bare.end(), segment.begin(), segment.end());
        }
    }
    bare.insert(bare.end(), whole.begin() + static_cast<std::ptrdiff_t>(header), whole.end());
    ASSERT_LT(bare.size(), whole.size());
    FrameDecoder decoder;
    const auto photo = decoder.photo(frameOf(PixelLayout::jpeg, 320, 180, bare));
    ASSERT_TRUE(photo);
    const auto tables = [](const Bytes& jpeg) {
        Bytes all;
        for (const auto& [marker, segment] : segmentsOf(jpeg)) {
            if (marker == 0xC4) {
                all.insert(all.end(), segment.begin(), segment.end());
            }
        }
        return all;
    };
    EXPECT_EQ(photo->size(), whole.size());
    // The encoder of the bars uses the standard ones.
    EXPECT_EQ(tables(*photo), tables(whole));
    const auto picture = JpegCodec().decode(*photo, 1);
    ASSERT_TRUE(picture.picture);
    EXPECT_FALSE(picture.isDamaged);
    EXPECT_EQ(picture.picture->pixels, JpegCodec().decode(whole, 1).picture->pixels);
}

TEST(FrameDecoderTest, PhotoOfARawFrameIsEncodedOnceAtQuality92) {
    const auto raw = packedBars(PixelLayout::bgrx, 320, 180);
    FrameDecoder decoder;
    const auto photo = decoder.photo(frameOf(PixelLayout::bgrx, 320, 180, raw));
    ASSERT_TRUE(photo);
    EXPECT_EQ(*photo, jpegBars(320, 180)) << "one encoding of the exact pixels";
    // The first step of the luma table is 16 at quality 50, so at 92 it is (16 * (200 - 2 * 92) + 50) / 100.
    const std::array tableMark{std::byte{0xFF}, std::byte{0xDB}};
    const auto table = std::ranges::search(*photo, tableMark);
    ASSERT_NE(table.begin(), photo->end());
    EXPECT_EQ(static_cast<int>(table.begin()[5]), 3);
}

/// A decoder whose time the test moves.
struct TimedDecoder {
    FrameDecoder::Clock::time_point time;
    FrameDecoder decoder{[this] { return time; }};

    TimedDecoder() = default;
    TimedDecoder(const TimedDecoder&) = delete;
    TimedDecoder& operator=(const TimedDecoder&) = delete;

    bool shows(const Bytes& jpeg) {
        return decoder.picture(frameOf(PixelLayout::jpeg, 320, 180, jpeg), 100, 50) != nullptr;
    }
    bool takes(const Bytes& jpeg) {
        return decoder.photo(frameOf(PixelLayout::jpeg, 320, 180, jpeg)).has_value();
    }
};

Bytes halfOf(const Bytes& whole) {
    return {whole.begin(), whole.begin() + std::ptrdiff_t(whole.size() / 2)};
}

/// Nothing of the picture is missing, but the decoder warns.
Bytes withBytesBeforeTheEnd(Bytes jpeg) {
    // More than the decoder has read ahead when the picture is complete.
    jpeg.insert(jpeg.end() - 2, 100, std::byte{0x55});
    return jpeg;
}

TEST(FrameDecoderTest, DamagedJpegIsShownByACameraThatDoesNoBetter) {
    const auto half = halfOf(jpegBars(320, 180));
    TimedDecoder poor;
    EXPECT_TRUE(poor.shows(half));
    EXPECT_TRUE(poor.takes(half));
}

TEST(FrameDecoderTest, DamagedJpegIsDroppedRightAfterASoundOne) {
    const auto whole = jpegBars(320, 180);
    const auto half = halfOf(whole);
    TimedDecoder good;
    ASSERT_TRUE(good.shows(whole));
    good.time += std::chrono::milliseconds(33);
    EXPECT_FALSE(good.shows(half));
    EXPECT_FALSE(good.takes(half));
    EXPECT_TRUE(good.shows(whole));
    good.time += std::chrono::milliseconds(99);
    EXPECT_FALSE(good.shows(half));
    good.time += std::chrono::milliseconds(1);
    EXPECT_TRUE(good.shows(half));
    EXPECT_TRUE(good.takes(half));
    EXPECT_TRUE(good.shows(whole));
    EXPECT_FALSE(good.shows(half)) << "a sound one has come again";
}

TEST(FrameDecoderTest, WarningsNeverStopThePreview) {
    const auto sound = jpegBars(320, 180);
    const auto warned = withBytesBeforeTheEnd(sound);
    ASSERT_TRUE(JpegCodec().decode(warned, 1).isDamaged);
    constexpr std::chrono::milliseconds interval{33};
    // One sound frame in so many.
    for (const int period : {2, 3, 10, 1000}) {
        TimedDecoder decoder;
        int dropped = 0;
        int mostDropped = 0;
        for (int frame = 0; frame < 300; ++frame) {
            const bool isShown = decoder.shows(frame % period == 0 ? sound : warned);
            dropped = isShown ? 0 : dropped + 1;
            mostDropped = std::max(mostDropped, dropped);
            decoder.time += interval;
        }
        EXPECT_LE(mostDropped, 3) << "one sound frame in " << period;
        EXPECT_TRUE(decoder.shows(sound));
    }
}

TEST(FrameDecoderTest, JpegIsCutAnywhereWithoutHarm) {
    const auto whole = jpegBars(64, 48);
    FrameDecoder decoder;
    for (std::size_t length = 0; length < whole.size(); ++length) {
        // An own allocation of exactly that size, so that reading on is noticed.
        const Bytes cut(whole.begin(), whole.begin() + std::ptrdiff_t(length));
        const auto frame = frameOf(PixelLayout::jpeg, 64, 48, cut);
        decoder.picture(frame, 30, 20);
        decoder.photo(frame);
    }
}

TEST(FrameDecoderTest, JpegIsDamagedAnywhereWithoutHarm) {
    const auto whole = jpegBars(64, 48);
    std::mt19937 random(8);
    for (int turn = 0; turn < 3000; ++turn) {
        auto damaged = whole;
        for (int hit = 0; hit < 1 + turn % 8; ++hit) {
            damaged[random() % damaged.size()] = byteOf(static_cast<int>(random() % 256));
        }
        FrameDecoder decoder;
        decoder.picture(frameOf(PixelLayout::jpeg, 64, 48, damaged), 30, 20);
        decoder.photo(frameOf(PixelLayout::jpeg, 64, 48, damaged));
    }
}

/// The bytes of a JPEG's frame header say the size; changed there, the rest does not fit.
Bytes withSize(Bytes jpeg, int width, int height) {
    const std::array mark{std::byte{0xFF}, std::byte{0xC0}};
    const auto at = std::ranges::search(jpeg, mark).begin();
    at[5] = byteOf(height >> 8);
    at[6] = byteOf(height & 0xFF);
    at[7] = byteOf(width >> 8);
    at[8] = byteOf(width & 0xFF);
    return jpeg;
}

TEST(FrameDecoderTest, JpegThatClaimsToBeEnormousIsNone) {
    FrameDecoder decoder;
    for (const auto& [width, height] : {std::pair{16384, 16384}, std::pair{65535, 65535}, std::pair{8193, 8},
                                        std::pair{8, 8193}, std::pair{8192, 8192}, std::pair{0, 0}}) {
        const auto jpeg = withSize(jpegBars(64, 48), width, height);
        EXPECT_FALSE(decoder.picture(frameOf(PixelLayout::jpeg, 64, 48, jpeg), 30, 20)) << width;
        EXPECT_FALSE(decoder.photo(frameOf(PixelLayout::jpeg, 64, 48, jpeg))) << width;
    }
}

/// A progressive JPEG whose last scan comes that many times.
Bytes withScans(int count) {
    const auto picture = barsPicture(64, 48);
    auto* const compressor = tjInitCompress();
    unsigned char* data = nullptr;
    unsigned long size = 0;
    tjCompress2(compressor, reinterpret_cast<const unsigned char*>(picture->pixels.data()), picture->width, 0,
                picture->height, TJPF_BGRX, &data, &size, TJSAMP_422, 92, TJFLAG_PROGRESSIVE);
    const auto* const first = reinterpret_cast<const std::byte*>(data);
    Bytes jpeg(first, first + size);
    tjFree(data);
    tjDestroy(compressor);
    const std::array mark{std::byte{0xFF}, std::byte{0xDA}};
    const auto lastScan = std::ranges::find_end(jpeg, mark).begin();
    // Without the two bytes that end the file.
    const Bytes scan(lastScan, jpeg.end() - 2);
    jpeg.resize(jpeg.size() - 2);
    for (int turn = 1; turn < count; ++turn) {
        jpeg.insert(jpeg.end(), scan.begin(), scan.end());
    }
    jpeg.insert(jpeg.end(), {std::byte{0xFF}, std::byte{0xD9}});
    return jpeg;
}

TEST(FrameDecoderTest, JpegOfThousandsOfScansIsNone) {
    FrameDecoder decoder;
    const auto ordinary = withScans(1);
    EXPECT_TRUE(decoder.picture(frameOf(PixelLayout::jpeg, 64, 48, ordinary), 30, 20));
    const auto jpeg = withScans(5000);
    EXPECT_FALSE(FrameDecoder().picture(frameOf(PixelLayout::jpeg, 64, 48, jpeg), 30, 20));
    EXPECT_FALSE(FrameDecoder().photo(frameOf(PixelLayout::jpeg, 64, 48, jpeg)));
}

TEST(FrameDecoderTest, JpegsOwnSizeCounts) {
    const auto jpeg = jpegBars(320, 180);
    FrameDecoder decoder;
    const auto picture = decoder.picture(frameOf(PixelLayout::jpeg, 1280, 720, jpeg), 300, 150);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 320);
    EXPECT_TRUE(showsBars(*picture));
}

TEST(JpegCodecTest, WhatIsNoJpegIsNone) {
    JpegCodec codec;
    EXPECT_EQ(codec.size({}), std::nullopt);
    EXPECT_FALSE(codec.decode({}, 1).picture);
    const Bytes noise(1000, std::byte{0x5A});
    EXPECT_FALSE(codec.decode(noise, 1).picture);
    const auto jpeg = jpegBars(32, 16);
    EXPECT_EQ(codec.size(jpeg), (JpegCodec::Size{32, 16}));
    EXPECT_TRUE(codec.decode(jpeg, 1).picture) << "and it still works afterwards";
}

} // namespace
