#include "app/MainWindow.h"

#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/Configuration.h"

using Platform::CVXButtonState;

namespace
{

/** Of MSG_SYS_ANTITHEFT_EXIT. */
constexpr int unlocked = 1;

} // namespace

MainWindow::MainWindow()
    : juce::TopLevelWindow("MainWindow", false)
{
    const bool display = Platform::UIHelper::hasDisplay();
    if (display)
        addToDesktop();
    const int width = Platform::UIHelper::getScreenWidth();
    const int height = Platform::UIHelper::getScreenHeight();
    if (display)
        centreWithSize(width, height);
    else
        setSize(width, height);
    setTopLeftPosition(0, 0);

    addButton(menu, "Menu", { 550, 380, 150, 30 });
    addButton(antitheftExit, "AntitheftExit", { 550, 430, 150, 30 });

    if (display)
        if (const auto* mainDisplay = juce::Desktop::getInstance().getDisplays().getPrimaryDisplay())
            if (mainDisplay->totalArea.getWidth() < width)
                enableDebugButtons();
}

void MainWindow::addButton(Platform::CVXButton& button, const char* label, juce::Rectangle<int> bounds)
{
    button.setBounds(bounds);
    auto& content = button.getContent();
    content.setTextColour(CVXButtonState::normal, juce::Colour(255, 255, 255));
    content.setTextColour(CVXButtonState::pressed, juce::Colour(0, 255, 255));
    content.setFontSize(20.0f);
    content.setText(label);
    addChildComponent(button.asComponent());
    button.setListener(this);
}

void MainWindow::enableDebugButtons()
{
    menu.asComponent().setVisible(true);
    antitheftExit.asComponent().setVisible(true);
}

void MainWindow::buttonClicked(Platform::CVXButton& button)
{
    if (&button == &antitheftExit)
        Kernel::postSystemMessage(Kernel::systemStateManagerId, Kernel::MSG_SYS_ANTITHEFT_EXIT, unlocked, 0);
}
