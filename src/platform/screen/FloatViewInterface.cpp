#include "platform/screen/FloatViewInterface.h"

namespace Platform
{

void FloatViewInterface::show(int)
{
    view.setVisible(true);
    view.toFront(false);
}

void FloatViewInterface::hide()
{
    view.setVisible(false);
}

} // namespace Platform
