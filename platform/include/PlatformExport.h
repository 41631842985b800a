#pragma once
// Symbols of the platform libraries that the module and hosts import.
#define PLATFORM_API __attribute__((visibility("default")))
