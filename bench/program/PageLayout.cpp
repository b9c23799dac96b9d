#include "bench/program/PageLayout.h"

#include "platform/base/Pubhead.h"

#include <algorithm>

namespace BenchProgram
{

using namespace Pubhead;

namespace
{

using Area = juce::Rectangle<int>;

constexpr int gap = 12;
/** Between these, the page's own. */
constexpr int bodyTop = 60;
constexpr int bodyBottom = 336;
constexpr int footTop = 352;
constexpr int footBottom = 456;
constexpr int clockWidth = 150;
constexpr int commonTop = 4;
constexpr int commonHeight = 48;
constexpr int commonWidth = 132;
constexpr int buttonHeight = 60;
constexpr int buttonsInRow = 5; ///< more are put in two rows
constexpr int pillHeight = 48;
constexpr int menuColumns = 4;
constexpr int menuRows = 3;
constexpr int keyColumns = 3;
constexpr int keyRows = 4;
constexpr int keyWidth = 124;
constexpr int entryHeight = 72;
constexpr int rowHeight = 56; ///< at most, lower when there are many
constexpr int stepKeyWidth = 64;
constexpr int stepValueWidth = 116;
constexpr int sideButtonWidth = 156;
constexpr int plateSize = 176;

int ceilingOf(int dividend, int divisor)
{
    return (dividend + divisor - 1) / divisor;
}

/** The cell of a grid, counted row by row, with gaps between the cells. They fill the grid to its last pixel. */
Area cellOf(Area grid, int columns, int rows, int index)
{
    const auto columnAt = [&](int i) { return grid.getX() + i * (grid.getWidth() + gap) / columns; };
    const auto rowAt = [&](int i) { return grid.getY() + i * (grid.getHeight() + gap) / rows; };
    const int column = index % columns;
    const int row = index / columns;
    return Area::leftTopRightBottom(columnAt(column), rowAt(row), columnAt(column + 1) - gap, rowAt(row + 1) - gap);
}

struct Common
{
    Touch::Does does;
    int page;
    const char* label;
};

constexpr Common menu { Touch::Does::chooses, mbMainMenu, "Menu" };
constexpr Common equaliser { Touch::Does::chooses, mbEQ, "Equaliser" };

std::vector<Common> commonOf(int page)
{
    switch (page)
    {
    case mbMainMenu:
    case mbAntitheft:
        return {};
    case mbStandby:
        return { menu };
    case mbAVOff:
        return { menu, equaliser };
    case mbEQ:
    case mbSetup:
    case mbCamera:
    case mbBTPhone:
        return { menu, { Touch::Does::leaves, page, "Close" } };
    default:
        return { menu, equaliser, { Touch::Does::leaves, page, "Off" } };
    }
}

PageLayout::Kind kindOf(const PageContent& content)
{
    if (content.picture != PageContent::Picture::none)
        return PageLayout::Kind::picture;
    if (!content.tiles.empty())
        return PageLayout::Kind::tiles;
    if (content.keypad)
        return PageLayout::Kind::keypad;
    if (!content.rows.empty())
        return PageLayout::Kind::rows;
    return content.levels.empty() ? PageLayout::Kind::texts : PageLayout::Kind::levels;
}

} // namespace

PageLayout::PageLayout(int page, const PageContent& content)
    : kind(kindOf(content))
{
    const auto area = Area::leftTopRightBottom(margin, bodyTop, width - margin, bodyBottom);
    placeCommon(page);
    if (kind != Kind::picture)
        placeFoot();
    switch (kind)
    {
    case Kind::tiles:
        placeTiles(content, area);
        break;
    case Kind::keypad:
        placeKeypad(content, area);
        break;
    case Kind::rows:
        placeRows(content, area);
        break;
    case Kind::levels:
        placeLevels(content, area);
        break;
    case Kind::picture:
        placePicture(content, area);
        break;
    case Kind::texts:
        placeTexts(content, area);
        break;
    }
}

const Touch* PageLayout::touchAt(juce::Point<int> position) const
{
    const auto found =
        std::find_if(touches.begin(), touches.end(), [&](auto& touch) { return touch.area.contains(position); });
    return found != touches.end() ? &*found : nullptr;
}

void PageLayout::placeCommon(int page)
{
    auto row = Area(margin, commonTop, width - 2 * margin, commonHeight);
    for (const auto& wanted : commonOf(page))
    {
        // What ends the page is at the right, away from what goes on from it.
        const auto cell =
            wanted.does == Touch::Does::leaves ? row.removeFromRight(commonWidth) : row.removeFromLeft(commonWidth);
        row.removeFromLeft(8);
        common.push_back({ cell, wanted.label });
        touches.push_back({ cell, wanted.does, wanted.page });
    }
}

void PageLayout::placeFoot()
{
    auto foot = Area::leftTopRightBottom(margin, footTop, width - margin, footBottom);
    clock = foot.removeFromRight(clockWidth);
    foot.removeFromRight(gap);
    if (kind == Kind::texts)
    {
        note = foot;
        return;
    }
    icon = foot.removeFromLeft(foot.getHeight()).reduced(10);
    foot.removeFromLeft(gap);
    texts = foot;
}

void PageLayout::placeTiles(const PageContent& content, Area area)
{
    for (const auto& tile : content.tiles)
    {
        const auto cell = cellOf(area, menuColumns, menuRows, static_cast<int>(tiles.size()));
        tiles.push_back(cell);
        touches.push_back({ cell, Touch::Does::touches, tile.id });
    }
}

void PageLayout::placeKeypad(const PageContent& content, Area area)
{
    const auto pad = area.removeFromRight(keyColumns * keyWidth + (keyColumns - 1) * gap);
    for (const auto id : keyIds)
    {
        const auto cell = cellOf(pad, keyColumns, keyRows, static_cast<int>(keys.size()));
        keys.push_back(cell);
        touches.push_back({ cell, Touch::Does::touches, id });
    }
    area.removeFromRight(2 * gap);
    entry = area.removeFromTop(entryHeight);
    placeButtons(content, area.removeFromBottom(buttonHeight), static_cast<int>(content.buttons.size()));
}

void PageLayout::placeRows(const PageContent& content, Area area)
{
    if (const auto count = static_cast<int>(content.buttons.size()); count > 0)
    {
        auto side = area.removeFromRight(sideButtonWidth);
        area.removeFromRight(gap);
        placeButtons(content, side.removeFromTop(juce::jmin(side.getHeight(), count * (buttonHeight + gap) - gap)), 1);
    }
    const auto count = static_cast<int>(content.rows.size());
    const auto each = juce::jmin(rowHeight, area.getHeight() / count);
    list = area.removeFromTop(each * count);
    auto rest = list;
    for (const auto& row : content.rows)
        placeRow(row, rest.removeFromTop(each));
}

void PageLayout::placeRow(const Row& row, Area area)
{
    rows.push_back(area);
    auto& around = steps.emplace_back();
    if (row.down == 0)
    {
        touches.push_back({ area, Touch::Does::touches, row.id });
        return;
    }
    around.up = area.removeFromRight(stepKeyWidth);
    around.value = area.removeFromRight(stepValueWidth);
    around.down = area.removeFromRight(stepKeyWidth);
    touches.push_back({ around.down, Touch::Does::touches, row.down });
    touches.push_back({ around.up, Touch::Does::touches, row.id });
}

void PageLayout::placeLevels(const PageContent& content, Area area)
{
    if (!content.buttons.empty())
    {
        placeButtons(content, area.removeFromTop(pillHeight), static_cast<int>(content.buttons.size()));
        area.removeFromTop(gap);
    }
    list = area;
    const auto count = static_cast<int>(content.levels.size());
    for (const auto& level : content.levels)
    {
        auto cell = cellOf(area, count, 1, static_cast<int>(levels.size()));
        levels.push_back(cell);
        if (level.fixed)
            continue;
        touches.push_back({ cell.removeFromTop(cell.getHeight() / 2), Touch::Does::touches, level.up });
        touches.push_back({ cell, Touch::Does::touches, level.down });
    }
}

void PageLayout::placePicture(const PageContent& content, Area area)
{
    scene = Area(width, height);
    texts = Area(margin, footBottom - 40, area.getWidth(), 40);
    placeButtons(content, area.removeFromBottom(pillHeight), static_cast<int>(content.buttons.size()));
}

void PageLayout::placeTexts(const PageContent& content, Area area)
{
    if (const auto count = static_cast<int>(content.buttons.size()); count > 0)
    {
        const int buttonRows = count > buttonsInRow ? 2 : 1;
        placeButtons(content, area.removeFromBottom(buttonRows * (buttonHeight + gap) - gap),
                     ceilingOf(count, buttonRows));
        area.removeFromBottom(gap);
    }
    area.removeFromLeft(16);
    icon = area.removeFromLeft(plateSize).withSizeKeepingCentre(plateSize, juce::jmin(plateSize, area.getHeight()));
    area.removeFromLeft(40);
    texts = area;
}

void PageLayout::placeButtons(const PageContent& content, Area area, int columns)
{
    for (const auto& button : content.buttons)
    {
        const auto rowsOfThem = ceilingOf(static_cast<int>(content.buttons.size()), columns);
        buttons.push_back(cellOf(area, columns, rowsOfThem, static_cast<int>(buttons.size())));
        touches.push_back({ buttons.back(), Touch::Does::touches, button.id });
    }
}

} // namespace BenchProgram
