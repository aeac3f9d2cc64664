// SPDX-License-Identifier: MIT
// The one tag window of the process. Main thread only.
#pragma once

#include "host/db/object_id.h"
#include "host/ui/dialog.h"

class CPhonomarkTagUIDlg;
class MxApDocument;
class MxDbDatabase;
class MxDbPhonomark;

/// Null while there is no window.
extern CPhonomarkTagUIDlg* g_taguidlg;

/// Shows the window for `note` with its upper-left corner at `point`, screen coordinates; the window there is is moved.
/// Nothing happens while notes are being dragged.
void ShowTagWindow(CPoint point, MxDbPhonomark* note);

/// Deletes the window, unless it plays.
void DestroyTagWindow();

/// Leaves the window where and as it is.
void UpdateTagWindow();

/// Deletes the window, if it plays.
void AbortPlayingAndDestroyWnd();

/// Deletes the window, whatever it does.
void removeTagWindow();

/// Ends a recording under way as the release of the button does: the note keeps what was said.
void stopRecordingInTagWindow();

/// The drawing is about to be written: a recording under way for one of its notes is put into the note as far as it
/// has come, and goes on.
void keepTakeOfTagWindow(const MxDbDatabase* database);

/// The document is about to go: none of its notes is the window's any more, nor anybody's who holds one.
void forgetDocumentInTagWindow(const MxApDocument* document);

/// A note was changed by undo, redo or somebody else; it was erased. The window follows if it is its own.
void noteChangedUnderTagWindow(MxDbObjectId id);
void noteErasedUnderTagWindow(MxDbObjectId id);
