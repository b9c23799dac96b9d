#include "platform/screen/Layout.h"

#include "platform/config/Resources.h"
#include "platform/screen/CVXButton.h"
#include "platform/screen/CVXImageView.h"
#include "platform/screen/CVXStatic.h"
#include "platform/screen/LayoutFile.h"

#include <optional>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/gui/Layout", "Widgets" };
constexpr int maxExtent = 4096;
constexpr int maxDepth = 8;

using Controls = std::vector<std::unique_ptr<juce::Component>>;

/** A control that owns those in it. */
class CVXGroup : public juce::Component
{
public:
    void take(Controls controls)
    {
        for (auto& each : controls)
            addChildComponent(*each);
        children = std::move(controls);
    }

private:
    Controls children;
};

std::optional<juce::Rectangle<int>> boundsOf(const juce::ValueTree& element)
{
    const int x = element["x"];
    const int y = element["y"];
    const int width = element["width"];
    const int height = element["height"];
    const auto isPlace = [](int value) { return value >= -maxExtent && value <= maxExtent; };
    const auto isSize = [](int value) { return value >= 0 && value <= maxExtent; };
    if (!isPlace(x) || !isPlace(y) || !isSize(width) || !isSize(height))
        return std::nullopt;
    return juce::Rectangle<int>(x, y, width, height);
}

void setUpText(CVXTextElement& text, const juce::ValueTree& element)
{
    const juce::String justify = element["justify"].toString();
    text.setText(element["text"].toString());
    text.setFontSize(juce::jlimit(1.0f, static_cast<float>(maxExtent), static_cast<float>(element["size"])));
    text.setBold(static_cast<int>(element["bold"]) != 0);
    text.setTextColour(juce::Colour::fromString(element["colour"].toString()));
    text.setJustification(justify == "left"    ? juce::Justification::centredLeft
                          : justify == "right" ? juce::Justification::centredRight
                                               : juce::Justification::centred);
}

std::unique_ptr<juce::Component> makeImage(const juce::ValueTree& element)
{
    auto image = std::make_unique<CVXImageView>();
    image->setImage(element["image"].toString());
    return image;
}

std::unique_ptr<juce::Component> makeStatic(const juce::ValueTree& element)
{
    auto text = std::make_unique<CVXStatic>();
    setUpText(text->getContent(), element);
    return text;
}

std::unique_ptr<juce::Component> makeButton(const juce::ValueTree& element)
{
    auto button = std::make_unique<CVXButton>(element["name"].toString());
    button->setImagePath(element["image"].toString());
    for (const auto& child : element)
    {
        const auto area = boundsOf(child);
        if (!area.has_value())
            return nullptr;
        if (child.hasType("Icon"))
        {
            button->setIconArea(*area);
            button->setIcon(child["image"].toString());
            continue;
        }
        if (!child.hasType("Text"))
            return nullptr;
        auto& text = button->addText(static_cast<int>(child["index"]));
        setUpText(text, child);
        text.setArea(*area);
    }
    return button;
}

std::unique_ptr<juce::Component> makeControl(const juce::ValueTree& element, int depth);

std::unique_ptr<juce::Component> makeGroup(const juce::ValueTree& element, int depth)
{
    if (depth == maxDepth)
        return nullptr;
    Controls controls;
    for (const auto& child : element)
    {
        auto control = makeControl(child, depth + 1);
        if (control == nullptr)
            return nullptr;
        controls.push_back(std::move(control));
    }
    auto group = std::make_unique<CVXGroup>();
    group->take(std::move(controls));
    return group;
}

std::unique_ptr<juce::Component> makeControl(const juce::ValueTree& element, int depth)
{
    const auto bounds = boundsOf(element);
    if (!bounds.has_value())
        return nullptr;
    auto control = element.hasType("Window") || element.hasType("Group") ? makeGroup(element, depth)
                   : element.hasType("Image")                            ? makeImage(element)
                   : element.hasType("Button")                           ? makeButton(element)
                   : element.hasType("Static")                           ? makeStatic(element)
                                                                         : nullptr;
    if (control == nullptr)
        return nullptr;
    control->setName(element["name"].toString());
    control->setBounds(*bounds);
    control->setVisible(static_cast<int>(element.getProperty("visible", 1)) != 0);
    return control;
}

} // namespace

std::unique_ptr<juce::Component> loadCtrlFromFile(const juce::String& name)
{
    const auto stream = CVXResPathManager::getInstance()->open(name);
    if (stream == nullptr)
    {
        if (!CVXResPathManager::getInstance()->contains(name))
            reportOnce(logger(), "no layout " + name);
        return nullptr;
    }
    const auto tree = readLayout(*stream);
    if (!tree.isValid())
    {
        reportOnce(logger(), "the layout " + name + " is damaged");
        return nullptr;
    }
    auto layout = tree.hasType("Window") ? makeControl(tree, 0) : nullptr;
    if (layout == nullptr)
    {
        reportOnce(logger(), "the layout " + name + " has controls that cannot be made");
        return nullptr;
    }
    return layout;
}

juce::Component* CVXRelationHelper::find(juce::Component* root, const juce::String& name)
{
    if (root == nullptr || root->getName() == name)
        return root;
    for (auto* child : root->getChildren())
        if (auto* found = find(child, name))
            return found;
    return nullptr;
}

} // namespace Platform
