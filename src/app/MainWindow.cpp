#include "app/MainWindow.h"

#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/config/Configuration.h"
#include "platform/screen/OverlayPeer.h"

using Platform::CVXButtonState;

namespace
{

/** Of MSG_SYS_ANTITHEFT_EXIT. */
constexpr int unlocked = 1;

} // namespace

MainWindow::MainWindow()
    : juce::TopLevelWindow("MainWindow", false)
{
    setBounds(0, 0, Platform::UIHelper::getScreenWidth(), Platform::UIHelper::getScreenHeight());
    addButton(menu, "Menu", { 550, 380, 150, 30 });
    addButton(antitheftExit, "AntitheftExit", { 550, 430, 150, 30 });
    if (Platform::UIHelper::hasDisplay())
        addToDesktop();
}

juce::ComponentPeer* MainWindow::createNewPeer(int style, void*)
{
    return new Platform::OverlayPeer(*this, style);
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

void MainWindow::visibilityChanged()
{
    TopLevelWindow::visibilityChanged();
    const int width = isVisible() && isOnDesktop() ? Platform::getDisplayWidth() : 0;
    const bool onDesk = width > 0 && width < getWidth();
    menu.asComponent().setVisible(onDesk);
    antitheftExit.asComponent().setVisible(onDesk);
}

void MainWindow::buttonClicked(Platform::CVXButton& button)
{
    if (&button == &antitheftExit)
        Kernel::postSystemMessage(Kernel::systemStateManagerId, Kernel::MSG_SYS_ANTITHEFT_EXIT, unlocked, 0);
}
