// SPDX-License-Identifier: MIT
// User input and output on the command line. Main thread only, inside a command unless stated.
#pragma once

#include "host/db/object_id.h"
#include "host/ge/geometry.h"
#include "host/rx/rx_class.h"
#include "host/rx/status.h"

#include <cstddef>

/// Results of the prompting operations; the values are compared by modules.
enum MxEdInputResult : int {
    kInputNormal = 5100,
    kInputNone = 5000, ///< Enter on an empty prompt
    kInputError = -5001,
    kInputCancel = -5002,
    kInputKeyword = -5005,
};

/// Prepares the next prompt. Bit 1 of `control`: an empty answer is not allowed. `keywords`: the local forms separated
/// by blanks, then "_" and the global forms in the same order; without "_" both are the same. Null or empty: none.
int mxedInitGet(int control, const wchar_t* keywords);

/// Asks for a point in user coordinates. `base` may be null; else a rubber band is drawn from it.
int mxedGetPoint(const MxGePoint3d* base, const wchar_t* prompt, MxGePoint3d& point);

/// Asks for the corner opposite to `base`, both in user coordinates; a rubber rectangle is drawn from `base`.
int mxedGetCorner(const MxGePoint3d& base, const wchar_t* prompt, MxGePoint3d& corner);

/// Asks for an entity, which is picked by a point (clicked or typed, user coordinates): the topmost one of the current
/// space whose graphics come within the pick box there. Entities of the class `passedOver`, which may be null, are
/// picked only where nothing else is. Nothing there, or no view to pick in: kInputError. `entity` is null whenever the
/// result is not kInputNormal.
int mxedEntSel(const wchar_t* prompt, MxDbObjectId& entity, MxGePoint3d& point, const MxRxClass* passedOver = nullptr);

/// Asks for one of the keywords; the global form is put into `keyword` of `capacity` wide characters, cut to fit.
int mxedGetKword(const wchar_t* prompt, wchar_t* keyword, std::size_t capacity);

/// The global form of the keyword that answered the last prompt, cut to fit.
int mxedGetInput(wchar_t* keyword, std::size_t capacity);

/// Asks for a text. Without `spaces` a blank ends the answer as Enter does. An empty answer is kInputNone.
int mxedGetString(bool spaces, const wchar_t* prompt, wchar_t* text, std::size_t capacity);

/// Converts a point, or with `displacement` a vector, from user to world coordinates.
bool mxdbUcs2Wcs(const MxGePoint3d& user, MxGePoint3d& world, bool displacement);

/// Prints on the command line as printf does (%s takes wide text). Outside commands too.
int mxutPrintf(const wchar_t* format, ...);
/// Prints `text` as it stands.
int mxutPrintText(const wchar_t* text);

/// Pixels of viewport 0 to world coordinates and back. It is the active drawing view or, while an entity draws itself,
/// the view that it is drawn for. Its origin is the upper-left corner, y down; its pixels are the windows', each of
/// which may be several of the screen's. False while there is no view.
bool mxedCoordFromPixelToWorld(int viewport, int pixelX, int pixelY, MxGePoint3d& world);
bool mxedCoordFromWorldToPixel(int viewport, const MxGePoint3d& world, int& pixelX, int& pixelY);

/// Draws (mode 1) or undraws (mode 2) one entity on the screen until it is next drawn anew.
int mxedRedraw(MxDbObjectId entity, int mode);

/// Makes the entity's graphics anew and draws it, also when its layer is locked.
Mx::ErrorStatus mxdbEntUpd(MxDbObjectId entity);

/// Sets the selection that the next command would work on; only clearing (null) is offered.
int mxedSSClearFirst();
