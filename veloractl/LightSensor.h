// The Sensor API.
#pragma once

#include <optional>

namespace veloractl {

// None: the Sensor API is not there.
std::optional<unsigned> CountLightSensors();

}  // namespace veloractl
