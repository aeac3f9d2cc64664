// SPDX-License-Identifier: MIT
// The contract's input and output operations over the prompter, the console and the active view.
#include "host/ed/input.h"

#include "host/db/database.h"
#include "host/ed/commands.h"
#include "merix/db/database_imp.h"
#include "merix/ed/active_view.h"
#include "merix/ed/command_stack.h"
#include "merix/ed/host_functions.h"
#include "merix/ed/printf_format.h"
#include "merix/ed/prompter.h"
#include "merix/ed/selection.h"

#include <algorithm>
#include <cmath>
#include <limits>

using merix::ed::Console;
using merix::ed::HostFunctions;
using merix::ed::Prompter;

namespace {

QString fromWide(const wchar_t* text) {
    return text ? QString::fromWCharArray(text) : QString();
}

void copyCut(const QString& text, wchar_t* buffer, std::size_t capacity) {
    if (!buffer || capacity == 0)
        return;
    const std::wstring wide = text.toStdWString();
    const std::size_t length = std::min(wide.size(), capacity - 1);
    std::copy_n(wide.begin(), length, buffer);
    buffer[length] = L'\0';
}

const merix::ge::ViewTransform* viewport(int number) {
    const auto* view = number == 0 ? merix::ed::viewport() : nullptr;
    return view && view->width > 0 && view->height > 0 ? view : nullptr;
}

/// The first of the entities that is not of the class; where all are, the first.
MxDbObjectId preferred(const std::vector<MxDbObjectId>& entities, const MxRxClass* passedOver) {
    const auto found = std::find_if(entities.begin(), entities.end(), [passedOver](MxDbObjectId id) {
        const MxDbObject* object = merix::db::DatabaseImp::peek(id);
        return !passedOver || !object || !object->isKindOf(passedOver);
    });
    if (found != entities.end())
        return *found;
    return entities.empty() ? MxDbObjectId() : entities.front();
}

/// A pixel number that an int holds, however far away the point is.
int toPixelNumber(double value) {
    constexpr double kLimit = std::numeric_limits<int>::max() / 2;
    return static_cast<int>(std::lround(std::clamp(value, -kLimit, kLimit)));
}

} // namespace

int mxedInitGet(int control, const wchar_t* keywords) {
    Prompter::instance().init(control, fromWide(keywords));
    return kInputNormal;
}

int mxedGetPoint(const MxGePoint3d* base, const wchar_t* prompt, MxGePoint3d& point) {
    return Prompter::instance().getPoint(base, fromWide(prompt), point);
}

int mxedGetCorner(const MxGePoint3d& base, const wchar_t* prompt, MxGePoint3d& corner) {
    return Prompter::instance().getCorner(base, fromWide(prompt), corner);
}

int mxedEntSel(const wchar_t* prompt, MxDbObjectId& entity, MxGePoint3d& point, const MxRxClass* passedOver) {
    entity = MxDbObjectId();
    const int result = Prompter::instance().getPick(fromWide(prompt), point);
    if (result != kInputNormal)
        return result;
    if (auto* view = merix::ed::activeView())
        entity = preferred(view->under(point), passedOver);
    return entity.isNull() ? kInputError : kInputNormal;
}

int mxedGetKword(const wchar_t* prompt, wchar_t* keyword, std::size_t capacity) {
    QString answer;
    const int result = Prompter::instance().getKeyword(fromWide(prompt), answer);
    copyCut(answer, keyword, capacity);
    return result;
}

int mxedGetInput(wchar_t* keyword, std::size_t capacity) {
    const QString& answer = Prompter::instance().lastKeyword();
    copyCut(answer, keyword, capacity);
    return answer.isEmpty() ? kInputError : kInputNormal;
}

int mxedGetString(bool spaces, const wchar_t* prompt, wchar_t* text, std::size_t capacity) {
    QString answer;
    const int result = Prompter::instance().getString(spaces, fromWide(prompt), answer);
    copyCut(answer, text, capacity);
    return result;
}

bool mxdbUcs2Wcs(const MxGePoint3d& user, MxGePoint3d& world, bool) {
    world = user; // drawings are worked on in world coordinates, so points and vectors are the same in both
    return true;
}

int mxutPrintf(const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::wstring text = merix::ed::formatWide(format, arguments);
    va_end(arguments);
    Console::instance().print(QString::fromStdWString(text));
    return kInputNormal;
}

int mxutPrintText(const wchar_t* text) {
    Console::instance().print(fromWide(text));
    return kInputNormal;
}

bool mxedCoordFromPixelToWorld(int viewportNumber, int pixelX, int pixelY, MxGePoint3d& world) {
    const auto* transform = viewport(viewportNumber);
    if (!transform)
        return false;
    world = transform->toWorld(pixelX * transform->pixelRatio, pixelY * transform->pixelRatio);
    return true;
}

bool mxedCoordFromWorldToPixel(int viewportNumber, const MxGePoint3d& world, int& pixelX, int& pixelY) {
    const auto* transform = viewport(viewportNumber);
    if (!transform || !std::isfinite(world.x) || !std::isfinite(world.y))
        return false;
    const MxGePoint2d pixel = transform->toPixel(world);
    pixelX = toPixelNumber(pixel.x / transform->pixelRatio);
    pixelY = toPixelNumber(pixel.y / transform->pixelRatio);
    return true;
}

int mxedRedraw(MxDbObjectId entity, int mode) {
    auto* view = merix::ed::activeView();
    if (!view || entity.isNull() || (mode != 1 && mode != 2))
        return kInputError;
    view->drawEntity(entity, mode == 1);
    return kInputNormal;
}

Mx::ErrorStatus mxdbEntUpd(MxDbObjectId entity) {
    if (entity.isNull())
        return Mx::eNullObjectId;
    MxDbObject* object = merix::db::DatabaseImp::peek(entity);
    if (!object)
        return Mx::eNotResident;
    if (!object->isKindOf(MxDbEntity::desc()))
        return Mx::eWrongClass;
    // Graphics are no part of what is saved or locked: nothing is opened, marked changed or kept for undo.
    ++object->data().graphicsVersion;
    entity.database()->imp().notifyGraphicsModified(*object);
    return Mx::eOk;
}

int mxedSSClearFirst() {
    merix::ed::Selection::instance().clear();
    return kInputNormal;
}

int mxedCommand(const wchar_t* name, const std::vector<MxEdAnswer>& answers) {
    using Outcome = merix::ed::CommandStack::Outcome;
    switch (merix::ed::CommandStack::instance().runGiven(fromWide(name), answers)) {
    case Outcome::kEnded:
        return kInputNormal;
    case Outcome::kCancelled:
        return kInputCancel;
    default:
        return kInputError;
    }
}

int mxedDefun(const wchar_t* name, int code) {
    return HostFunctions::instance().define(fromWide(name), code) ? kInputNormal : kInputError;
}

int mxedUndef(const wchar_t* name, int code) {
    return HostFunctions::instance().undefine(fromWide(name), code) ? kInputNormal : kInputError;
}

int mxedGetFunCode() {
    return HostFunctions::instance().codeBeingCalled().value_or(-1);
}

int mxedRetInt(int value) {
    if (!HostFunctions::instance().codeBeingCalled())
        return kInputError;
    HostFunctions::instance().setResult(value);
    return kInputNormal;
}
