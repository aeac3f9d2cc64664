// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/database.h"
#include "merix/ap/document_imp.h"
#include "merix/db/database_imp.h"
#include "merix/ed/active_view.h"
#include "merix/ed/prompter.h"
#include "phonomark/entity/phonomark.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <optional>
#include <string>
#include <vector>

/// The module loaded into the real host with one new drawing open.
class ModuleTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    merix::ap::Document& document() { return *m_document; }
    void useDocument(merix::ap::Document& other) { m_document = &other; }
    MxDbDatabase& database() { return *m_document->database(); }

    /// A note of the kind in the current space, listed in the registry.
    MxDbObjectId addNote(int type = kPointNote, const MxGePoint3d& position = {});
    /// A line from (0, 0) to (10, 5) in the current space.
    MxDbObjectId addLine();
    /// The note behind the id without opening it.
    MxDbPhonomark& note(MxDbObjectId id);
    std::vector<MxDbObjectId> listed();

    /// What was printed on the command line since the last call.
    std::string printed();

    /// An answer of the user who presses Esc.
    static constexpr char kEscape[] = "\x1b";
    /// Runs a command line and answers its prompts; the last answer is Esc.
    void run(const std::string& command, std::deque<std::string> answers = {});

    QTemporaryDir folder;

private:
    merix::ap::Document* m_document = nullptr;
};

/// A drawing view without a window: pixels to world by the transform.
class TransformView : public merix::ed::ActiveView {
public:
    explicit TransformView(double unitsPerPixel);
    ~TransformView() override;
    const merix::ge::ViewTransform& transform() const override { return m_transform; }
    void setTransform(const merix::ge::ViewTransform& transform) override { m_transform = transform; }
    std::optional<merix::ge::ViewTransform> showingAll() override { return {}; }
    std::vector<MxDbObjectId> under(const MxGePoint3d& world) override;
    std::vector<MxDbObjectId> inBox(const MxDbExtents& box, bool crossing) override;
    void regenerate() override {}
    void update() override {}
    void drawEntity(MxDbObjectId id, bool draw) override { drawn.emplace_back(id, draw); }

    std::vector<std::pair<MxDbObjectId, bool>> drawn;

private:
    merix::ge::ViewTransform m_transform;
};

/// A block of the C allocator with the bytes 1, 2, 3 ...
unsigned char* soundBytes(std::size_t count);
