#include "platform/screen/linux/XPicture.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace Platform
{

namespace
{

constexpr int seenFrom = 128; ///< of 255
constexpr int bitsOfChannel = 8;

const juce::PixelARGB* lineOf(const juce::Image::BitmapData& picture, int y)
{
    return reinterpret_cast<const juce::PixelARGB*>(picture.getLinePointer(y));
}

/** A channel's value in the bits of its mask. */
std::uint32_t channel(std::uint8_t value, std::uint32_t mask)
{
    return static_cast<std::uint32_t>(value) >> (bitsOfChannel - std::popcount(mask)) << std::countr_zero(mask);
}

std::uint32_t pixelOf(juce::PixelARGB pixel, const XPixelFormat& format)
{
    if (format.blended)
        return pixel.getNativeARGB();
    pixel.unpremultiply();
    return channel(pixel.getRed(), format.masks[0]) | channel(pixel.getGreen(), format.masks[1]) |
           channel(pixel.getBlue(), format.masks[2]);
}

bool isKnown(const XPixelFormat& format)
{
    if (format.blended)
        return format.bytesPerPixel == 4 && format.masks == decltype(format.masks) { 0xff0000, 0xff00, 0xff };
    return (format.bytesPerPixel == 2 || format.bytesPerPixel == 4) &&
           std::all_of(format.masks.begin(), format.masks.end(),
                       [](auto mask) { return mask != 0 && std::popcount(mask) <= bitsOfChannel; });
}

} // namespace

std::optional<XPixelFormat> XPixelFormat::find(const XConnection& x, bool blended)
{
    constexpr std::uint8_t blendedDepth = 32;
    const auto& screen = x.getScreen();
    const auto* setup = xcb_get_setup(x.get());
    XPixelFormat format {};
    format.blended = blended;
    format.depth = blended ? blendedDepth : screen.root_depth;
    for (auto formats = xcb_setup_pixmap_formats_iterator(setup); formats.rem > 0; xcb_format_next(&formats))
        if (formats.data->depth == format.depth)
            format.bytesPerPixel = formats.data->bits_per_pixel / 8;
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths))
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0; xcb_visualtype_next(&visuals))
            if (depths.data->depth == format.depth && (blended || visuals.data->visual_id == screen.root_visual) &&
                visuals.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR && format.visual == 0)
            {
                format.visual = visuals.data->visual_id;
                format.masks = { visuals.data->red_mask, visuals.data->green_mask, visuals.data->blue_mask };
            }
    if (setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST || !isKnown(format))
        return std::nullopt;
    return format;
}

std::vector<std::uint8_t> pixelsOf(const juce::Image& picture, const XPixelFormat& format)
{
    const juce::Image::BitmapData source(picture, juce::Image::BitmapData::readOnly);
    const auto stride = (static_cast<std::size_t>(picture.getWidth()) * format.bytesPerPixel + 3) & ~std::size_t { 3 };
    std::vector<std::uint8_t> pixels(stride * static_cast<std::size_t>(picture.getHeight()));
    for (int y = 0; y < picture.getHeight(); ++y)
    {
        auto* target = pixels.data() + stride * static_cast<std::size_t>(y);
        for (int x = 0; x < picture.getWidth(); ++x, target += format.bytesPerPixel)
        {
            const auto pixel = pixelOf(lineOf(source, y)[x], format);
            std::memcpy(target, &pixel, format.bytesPerPixel);
        }
    }
    return pixels;
}

std::vector<xcb_rectangle_t> outlineOf(const juce::Image& picture)
{
    const juce::Image::BitmapData source(picture, juce::Image::BitmapData::readOnly);
    std::vector<xcb_rectangle_t> rectangles;
    for (int y = 0; y < picture.getHeight(); ++y)
    {
        const auto* line = lineOf(source, y);
        for (int x = 0; x < picture.getWidth();)
        {
            const int begin = x;
            const bool seen = line[x].getAlpha() >= seenFrom;
            while (x < picture.getWidth() && (line[x].getAlpha() >= seenFrom) == seen)
                ++x;
            if (seen)
                rectangles.push_back({ static_cast<std::int16_t>(begin), static_cast<std::int16_t>(y),
                                       static_cast<std::uint16_t>(x - begin), 1 });
        }
    }
    return rectangles;
}

} // namespace Platform
