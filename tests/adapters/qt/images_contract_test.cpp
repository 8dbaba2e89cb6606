#include <QImage>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "base/files.h"

#include "adapters/qt/qt_image_codec.h"
#include "adapters/qt/qt_pictures.h"
#include "fakes/fake_images.h"
#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

const QStringList families = {"Inter", "DejaVu Sans"};
const Color white{1, 1, 1, 1}, green{0.2, 0.8, 0.3, 1};

RichText plain(const std::string& text, double size = 26) {
    return {{{text, white, FontWeight::semibold}}, size};
}

struct FakeKit {
    FakeImageCodec codec;
    FakeTextMeasure measure;
    FakePictureRenderer renderer;
};
struct QtKit {
    QtImageCodec codec;
    QtTextMeasure measure{families};
    QtPictureRenderer renderer{families};
};

template <class Kit>
class ImagesContract : public testing::Test {
  protected:
    Kit kit;
    const ImageCodec& codec = kit.codec;
    const TextMeasure& measure = kit.measure;
    const PictureRenderer& renderer = kit.renderer;
};
using Kits = testing::Types<FakeKit, QtKit>;
TYPED_TEST_SUITE(ImagesContract, Kits);

TYPED_TEST(ImagesContract, PicturesComeBackFromTheirFiles) {
    ImageBuffer image(7, 5);  // an odd width: rows in files are padded
    for (std::size_t i = 0; i < image.pixels.size(); ++i)
        image.pixels[i] = i % 4 == 3 ? 255 : static_cast<std::uint8_t>(i * 7);
    image.pixels[3] = 0, image.pixels[0] = 0, image.pixels[1] = 0, image.pixels[2] = 0;
    const auto file = this->codec.encodePng(image);
    ASSERT_TRUE(file);
    const auto back = this->codec.decode(*file);
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, image);
    const auto photo = this->codec.encodeJpeg(image, 90);
    ASSERT_TRUE(photo);
    const auto decoded = this->codec.decode(*photo);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->width, 7);
    EXPECT_EQ(decoded->height, 5);
}

TYPED_TEST(ImagesContract, WhatIsNoPictureIsAnError) {
    const auto file = this->codec.encodePng(ImageBuffer(40, 40)).value();
    EXPECT_FALSE(this->codec.decode({}));
    EXPECT_FALSE(this->codec.decode(toBytes("not a picture")));
    EXPECT_FALSE(this->codec.decode(BytesView(file).first(file.size() / 2)));
    EXPECT_EQ(this->codec.decode({}).error().domain, "image");
    EXPECT_FALSE(this->codec.encodePng({}));
    EXPECT_FALSE(this->codec.encodeJpeg({}, 80));
}

TYPED_TEST(ImagesContract, TextsGrowDownwardsWhereTheyMustWrap) {
    const auto line = this->measure.boundingSize(plain("Передача вперёд_12"), 10000);
    const auto wrapped = this->measure.boundingSize(plain("Передача вперёд_12"), line.width * 0.7);
    EXPECT_GT(line.width, 100);
    EXPECT_NEAR(wrapped.height, line.height * 2, 0.01);
    EXPECT_LE(wrapped.width, line.width * 0.7);
    const auto broken = this->measure.boundingSize(plain("Передача\nвперёд_12\n"), 10000);
    EXPECT_NEAR(broken.height, line.height * 3, 0.01);
    // A word wider than the line is broken.
    EXPECT_GT(this->measure.boundingSize(plain(std::string(60, 'W')), 200).height, line.height * 2);
    const auto twice = this->measure.boundingSize(plain("Передача вперёд_12", 52), 10000);
    EXPECT_NEAR(twice.width / line.width, 2, 0.02);
    EXPECT_EQ(this->measure.boundingSize(plain(""), 100), Size{});
    EXPECT_EQ(this->measure.boundingSize({}, 100), Size{});
}

TYPED_TEST(ImagesContract, ListsArePaintedBackToFrontOnNothing) {
    const DisplayList list{{40, 30},
                           {FillRect{{10, 10, 20, 10}, {0, 0, 0, 0.5}},
                            FillRect{{20, 10, 20, 20}, green}, DrawText{{2, 2, 0, 0}, {}}}};
    const auto image = this->renderer.render(list);
    ASSERT_EQ(image.width, 40);
    ASSERT_EQ(image.height, 30);
    const auto pixel = [&](int x, int y) {
        const auto* p = image.row(y) + x * 4;
        return std::vector<int>(p, p + 4);
    };
    EXPECT_EQ(pixel(0, 0), (std::vector{0, 0, 0, 0}));
    EXPECT_EQ(pixel(9, 10), (std::vector{0, 0, 0, 0}));
    EXPECT_EQ(pixel(10, 10)[0], 0);
    EXPECT_NEAR(pixel(10, 10)[3], 128, 1);
    EXPECT_EQ(pixel(25, 15), (std::vector{51, 204, 77, 255}));
    EXPECT_EQ(pixel(39, 29), (std::vector{51, 204, 77, 255}));
    EXPECT_TRUE(this->renderer.render({}).empty());
}

// The rows and columns of a picture between which something is painted.
struct Extent {
    int top = -1, bottom = -1, left = 1 << 20, right = -1;
};
Extent painted(const ImageBuffer& image) {
    Extent extent;
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            if (image.row(y)[x * 4 + 3] > 40) {
                if (extent.top < 0)
                    extent.top = y;
                extent.bottom = y;
                extent.left = std::min(extent.left, x);
                extent.right = std::max(extent.right, x);
            }
    return extent;
}

class QtPictures : public testing::Test {
  protected:
    QtTextMeasure measure{families};
    QtPictureRenderer renderer{families};

    ImageBuffer paint(const RichText& text, Rect rect) const {
        return renderer.render({{rect.right() + 50, rect.bottom() + 200}, {DrawText{rect, text}}});
    }
};

TEST_F(QtPictures, WhatIsMeasuredIsWhatIsPainted) {
    for (const double size : {13.0, 26.0, 39.3, 78.0}) {
        const auto text =
            plain("УДАР: Штрафной gjy_4, Гол, Передача, Ещё одно событие матча", size);
        const double width = size * 12;
        const auto needed = measure.boundingSize(text, width);
        const auto whole = painted(paint(text, {0, 0, width, 4000}));
        // A picture of the measured size shows the complete text.
        const auto fitted = painted(paint(text, {0, 0, width, std::ceil(needed.height)}));
        EXPECT_EQ(fitted.bottom, whole.bottom);
        EXPECT_EQ(fitted.right, whole.right);
        EXPECT_LE(whole.bottom, needed.height);
        EXPECT_GE(whole.bottom, needed.height - size);
        EXPECT_LE(whole.right, needed.width + 1);
        EXPECT_GE(whole.right, needed.width - size / 3);
    }
}

TEST_F(QtPictures, TooMuchTextEndsInAnEllipsisOnAWholeLine) {
    const auto text = plain("Первая строка вторая строка третья строка четвёртая строка", 26);
    const auto line = measure.boundingSize(plain("Ф"), 1000).height;
    const Rect rect{10, 10, 200, line * 2.6};
    const auto image = paint(text, rect);
    const auto extent = painted(image);
    EXPECT_LE(extent.bottom, rect.y + line * 2);
    EXPECT_LT(extent.right, rect.right());
    EXPECT_GE(extent.left, rect.x);
    // The same two lines look different without the elided end.
    const auto shown = paint(plain("Первая строка вторая", 26), rect);
    EXPECT_NE(image.pixels, shown.pixels);
    // An area lower than one line shows the upper part of the first line and nothing outside.
    const auto slip = painted(paint(text, {10, 10, 200, line * 0.7}));
    EXPECT_GT(slip.bottom, 10);
    EXPECT_LE(slip.bottom, 10 + line * 0.7);
}

TEST_F(QtPictures, RunsHaveTheirColorsAndWeights) {
    const Color red{1, 0, 0, 1}, blue{0, 0, 1, 1};
    RichText text{{{"████", red}, {"████\n", blue}, {"████", red, FontWeight::regular}}, 20};
    const auto image = paint(text, {0, 0, 400, 100});
    const double line = measure.boundingSize(plain("█", 20), 1000).height;
    const double half = measure.boundingSize(plain("████", 20), 1000).width;
    const auto at = [&](double x, double y) {
        const auto* p = image.row(static_cast<int>(y)) + static_cast<int>(x) * 4;
        return std::vector<int>(p, p + 4);
    };
    EXPECT_EQ(at(half / 2, line * 0.6), (std::vector{255, 0, 0, 255}));
    EXPECT_EQ(at(half * 1.5, line * 0.6), (std::vector{0, 0, 255, 255}));
    EXPECT_EQ(at(half / 2, line * 1.6), (std::vector{255, 0, 0, 255}));
    auto bold = plain("Средняя передача"), regular = bold;
    regular.runs[0].weight = FontWeight::regular;
    EXPECT_GT(measure.boundingSize(bold, 1000).width, measure.boundingSize(regular, 1000).width);
}

TEST_F(QtPictures, AnyThreadPaintsTheSame) {
    const auto text = plain("Гол_3, Удар в створ", 39);
    const DisplayList list{
        {600, 120},
        {FillRect{{0, 0, 600, 120}, {0, 0, 0, 0.55}}, DrawText{{12, 12, 576, 96}, text}}};
    const auto expected = renderer.render(list);
    std::vector<ImageBuffer> images(4);
    std::vector<std::thread> threads;
    for (auto& image : images)
        threads.emplace_back([&] {
            for (int i = 0; i < 5; ++i)
                image = renderer.render(list);
        });
    for (auto& thread : threads)
        thread.join();
    for (const auto& image : images)
        EXPECT_EQ(image, expected);
}

TEST(QtImageCodec, TransparencyLastsAndPhotosLieOnBlack) {
    QtImageCodec codec;
    ImageBuffer image(16, 16);
    for (std::size_t i = 0; i < image.pixels.size(); i += 4) {
        image.pixels[i] = 128;  // red at half alpha
        image.pixels[i + 3] = 128;
    }
    const auto png = codec.decode(codec.encodePng(image).value()).value();
    EXPECT_EQ(png, image);
    const auto jpeg = codec.decode(codec.encodeJpeg(image, 95).value()).value();
    EXPECT_NEAR(jpeg.row(8)[8 * 4], 128, 4);
    EXPECT_NEAR(jpeg.row(8)[8 * 4 + 1], 0, 4);
    EXPECT_EQ(jpeg.row(8)[8 * 4 + 3], 255);
}

TEST(QtImageCodec, OtherFormatsAreRefused) {
    QImage bitmap(4, 4, QImage::Format_RGB32);
    bitmap.fill(Qt::red);
    TempFolder folder;
    const auto file = folder.path() / "picture.bmp";
    ASSERT_TRUE(bitmap.save(QString::fromStdString(file.string())));
    EXPECT_FALSE(QtImageCodec().decode(readFile(file).value()));
}

}  // namespace
}  // namespace tembrix
