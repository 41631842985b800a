#pragma once
// Marks the module's exported interface: AF::Startup, AF::Shutdown, the frame
// classes and every effect class. Everything else is hidden.
#define AF_EXPORT __attribute__((visibility("default")))
