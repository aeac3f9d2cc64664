// SPDX-License-Identifier: MIT
#pragma once

/// A context menu that a module offers for its commands or objects. Main thread only.
class MxEdUIContext {
public:
    virtual ~MxEdUIContext() = default;
    /// The menu to show, owned by the context; null for none.
    virtual void* getMenuContext() = 0;
    /// The user chose the menu's entry `command`.
    virtual void onCommand(unsigned command) = 0;
};
