#pragma once

#include "platform/screen/linux/XConnection.h"

#include <array>
#include <juce_graphics/juce_graphics.h>
#include <optional>

namespace Platform
{

/** How a display holds the pixels of windows of one depth. */
struct XPixelFormat
{
    /**
        The format of the screen's own windows, or of those that a compositing manager blends. None when there is no
        such windows, or pixels that are not 16 or 32 bits with the low byte first.
    */
    static std::optional<XPixelFormat> find(const XConnection& x, bool blended);

    bool blended; ///< the pixels have an alpha channel
    std::uint8_t depth;
    std::uint8_t bytesPerPixel;
    xcb_visualid_t visual;
    std::array<std::uint32_t, 3> masks; ///< red, green, blue
};

/**
    The lines of an ARGB picture as the display takes them, each padded to 32 bits. Where nothing is blended, a pixel
    has its full colour: the edge of what is seen is not darkened by what is not.
*/
std::vector<std::uint8_t> pixelsOf(const juce::Image& picture, const XPixelFormat& format);

/** What is seen of an ARGB picture where nothing is blended: its pixels that are rather opaque than transparent. */
std::vector<xcb_rectangle_t> outlineOf(const juce::Image& picture);

} // namespace Platform
