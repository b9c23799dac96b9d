#include "platform/Configuration.h"

namespace Platform
{

Configuration& Configuration::get()
{
    static Configuration configuration;
    return configuration;
}

} // namespace Platform
