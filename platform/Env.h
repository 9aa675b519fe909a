#pragma once

// Process environment variables.
namespace hs {
namespace os {

/// Sets the environment variable `name` to `value` for this process and the processes it starts;
/// a null `value` removes it. False when the environment cannot be changed.
bool SetEnv(const char* name, const char* value);

}  // namespace os
}  // namespace hs
