#pragma once

namespace teralune {

class IApplication;
class ITeraluneConstants;

/// Shows a developer in the crash reporter's log when the system is short of memory.
class MemoryUtil {
public:
    /// Called once by the host; a second call installs a second monitor. Does nothing unless the constants
    /// say debug mode. Events are logged from a queue of their own, and the monitor lives as long as the
    /// process, so the application has to as well.
    static void installMemoryWarning(IApplication& application, const ITeraluneConstants& constants);
};

} // namespace teralune
