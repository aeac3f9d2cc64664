// SPDX-License-Identifier: MIT
// Commands and host-language functions. Main thread only.
#pragma once

#include "host/ge/geometry.h"
#include "host/rx/rx_class.h"
#include "host/rx/status.h"

#include <string>
#include <variant>
#include <vector>

/// A command's body.
using MxEdCommandFunction = void (*)();

class MxEdUIContext;

/// A registered command, owned by the command stack.
class MxEdCommand : public MxRxObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;
    virtual const wchar_t* groupName() const = 0;
    virtual const wchar_t* globalName() const = 0;
    virtual const wchar_t* localName() const = 0;
    virtual int flags() const = 0;
};

/// The stack of registered commands, in the system registry under "MERIX_REGISTERED_COMMANDS".
class MxEdCommandStack : public MxRxObject {
public:
    static MxRxClass* desc();
    MxRxClass* isA() const override;

    /// Adds a command; names are copied and compared without case. A command of the same group and global name is
    /// replaced (a module that was loaded again). `created` may be null.
    virtual Mx::ErrorStatus addCommand(const wchar_t* group, const wchar_t* globalName, const wchar_t* localName,
                                       int flags, MxEdCommandFunction function, MxEdUIContext* contextMenu = nullptr,
                                       int functionCode = -1, void* resourceHandle = nullptr,
                                       MxEdCommand** created = nullptr) = 0;
};

/// One answer to a command's prompts: a text as it would be typed, or a point in user coordinates.
using MxEdAnswer = std::variant<std::wstring, MxGePoint3d>;

/// Runs a host command (`_NAME`: by its global name) to its end with these answers; a prompt that is left without one
/// is cancelled. Inside a command it is part of that command's undo unit. While the variable CMDECHO is 0 neither the
/// command nor its prompts and answers are shown. kInputNormal; kInputCancel when the command ended cancelled;
/// kInputError when there is no such command, it failed, works on the set of open drawings, or a prompt waits.
int mxedCommand(const wchar_t* name, const std::vector<MxEdAnswer>& answers = {});

/// Defines and undefines a host-language function of the calling module in the current document; calling it sends
/// the module message 5 with this code.
int mxedDefun(const wchar_t* name, int code);
int mxedUndef(const wchar_t* name, int code);
/// The code of the function being called, -1 outside a call.
int mxedGetFunCode();
/// Sets the result of the function being called.
int mxedRetInt(int value);
