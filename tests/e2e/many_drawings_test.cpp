// SPDX-License-Identifier: MIT
// Ten drawings with a hundred notes each in the real program, worked on by a long random script: whenever one is saved,
// its file lists the notes that it holds, in the order in which they came.
#include "tests/support/dxf_tags.h"
#include "tests/support/process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <random>

using merix::test::Outcome;

namespace {

constexpr int kSheets = 10, kNotes = 100, kSteps = 200;

/// A note is known by its number; it stands at (number, 0).
using Notes = std::vector<int>;

/// A drawing as it should be: what is in its latest file, and while it is open what it holds.
struct Sheet {
    QByteArray file;
    Notes saved;
    Notes listed;        ///< in the order of the list
    std::size_t own = 0; ///< of the notes in the order of their making, how many were made since opening
    Notes undone;        ///< can be done again; the next one is the last
};

class Session {
public:
    explicit Session(unsigned seed)
        : m_random(seed) {}

    QByteArray script() {
        makeSheets();
        while (m_open.size() < kSheets)
            open(int(m_open.size()));
        for (int step = 0; step < kSteps; ++step) {
            act();
            if (!m_open.empty())
                m_script += "AUDIT\n@expect 0 broken, 0 loose\n";
        }
        while (!m_open.empty()) {
            m_current = below(m_open.size());
            m_script += "@activate " + QByteArray::number(int(m_current) + 1) + '\n';
            save();
            close();
        }
        return m_script;
    }
    /// Every file that was written, with its notes in the order of their list.
    const std::map<QByteArray, Notes>& files() const { return m_files; }

private:
    std::size_t below(std::size_t bound) { return std::uniform_int_distribution<std::size_t>(0, bound - 1)(m_random); }
    Sheet& current() { return m_sheets[std::size_t(m_open[m_current])]; }

    void makeSheets() {
        m_script += "NEW\n";
        Notes notes;
        for (int n = 0; n < kNotes; ++n)
            notes.push_back(insert());
        m_sheets.resize(kSheets);
        for (Sheet& sheet : m_sheets) {
            sheet.saved = notes;
            write(sheet);
        }
        m_script += "@close\n";
    }
    int insert() {
        m_script += "PHONOMARK\n" + QByteArray::number(m_notes) + ",0\n";
        return m_notes++;
    }
    void write(Sheet& sheet) {
        const int number = int(m_files.size());
        sheet.file = "sheet" + QByteArray::number(number) + (below(2) ? ".dxf" : ".merix");
        m_files[sheet.file] = sheet.saved;
        m_script += "@save " + sheet.file + '\n';
    }

    void act() {
        switch (m_open.empty() ? 7 : below(8)) {
        case 0:
        case 1:
            m_current = below(m_open.size());
            m_script += "@activate " + QByteArray::number(int(m_current) + 1) + '\n';
            break;
        case 2:
            m_script += below(2) ? "ZOOM\nIn\n" : "ZOOM\nExtents\n";
            break;
        case 3:
            edit();
            break;
        case 4:
            eraseAndTakeBack();
            break;
        case 5:
            save();
            break;
        case 6:
            close();
            break;
        default:
            open(int(below(kSheets)));
        }
    }
    void edit() {
        Sheet& sheet = current();
        switch (below(3)) {
        case 0:
            if (sheet.own > 0) {
                const auto newest = std::max_element(sheet.listed.begin(), sheet.listed.end());
                sheet.undone.push_back(*newest);
                sheet.listed.erase(newest);
                --sheet.own;
                m_script += "@undo\n";
                break;
            }
            [[fallthrough]];
        case 1:
            if (!sheet.undone.empty()) {
                sheet.listed.push_back(sheet.undone.back());
                sheet.undone.pop_back();
                ++sheet.own;
                m_script += "@redo\n";
                break;
            }
            [[fallthrough]];
        default:
            sheet.undone.clear();
            sheet.listed.push_back(insert());
            ++sheet.own;
        }
    }
    /// Erasing is undone from its end: the list is then that of the drawing, the other way round.
    void eraseAndTakeBack() {
        Sheet& sheet = current();
        sheet.undone.clear();
        std::sort(sheet.listed.rbegin(), sheet.listed.rend());
        m_script += "ERASE\nAll\n\n@undo\n";
    }
    void save() {
        current().saved = current().listed;
        write(current());
    }
    void close() {
        m_open.erase(m_open.begin() + std::ptrdiff_t(m_current));
        if (!m_open.empty())
            m_current = std::min(m_current, m_open.size() - 1);
        m_script += "@close\n";
    }
    void open(int number) {
        Sheet& sheet = m_sheets[std::size_t(number)];
        const auto place = std::find(m_open.begin(), m_open.end(), number);
        m_current = std::size_t(place - m_open.begin());
        m_script += "@open " + sheet.file + '\n';
        if (place != m_open.end())
            return; // it is activated
        m_open.push_back(number);
        sheet.listed = sheet.saved;
        sheet.own = 0;
        sheet.undone.clear();
    }

    std::mt19937 m_random;
    std::vector<Sheet> m_sheets;
    std::vector<int> m_open; ///< the sheets in the order of their tabs
    std::size_t m_current = 0;
    int m_notes = 0;
    QByteArray m_script;
    std::map<QByteArray, Notes> m_files;
};

/// The notes that the list in a DXF file names, and those that the file holds, in their order.
std::pair<Notes, Notes> notesIn(const QString& path) {
    const auto tags = merix::test::readTags(path);
    std::map<QByteArray, int> byHandle;
    Notes held, listed;
    for (const auto& record : merix::test::records(tags, "ENTITIES"))
        if (record[0].value == "PHONOMARK")
            held.push_back(byHandle[merix::test::value(record, 5)] = int(merix::test::number(record, 10)));
    for (const auto& record : merix::test::records(tags, "OBJECTS"))
        if (record[0].value == "XRECORD")
            for (const merix::test::Tag& tag : record)
                if (const auto note = byHandle.find(tag.value); tag.code == 102 && !tag.value.startsWith('{'))
                    listed.push_back(note == byHandle.end() ? -1 : note->second);
    return {listed, held};
}

} // namespace

TEST(ManyDrawings, EveryFileOfALongSessionListsTheNotesThatItHolds) {
    const int given = testing::UnitTest::GetInstance()->random_seed();
    const unsigned seed = given > 0 ? unsigned(given) : std::random_device()();
    std::cout << "seed " << seed << std::endl;
    SCOPED_TRACE("seed " + std::to_string(seed));
    testing::Test::RecordProperty("seed", std::to_string(seed));
    const QTemporaryDir folder;
    Session session(seed);
    const Outcome outcome = merix::test::runScript(session.script(), folder.path());
    ASSERT_EQ(outcome.status, 0) << outcome.err.constData() << outcome.out.right(4000).constData();
    QByteArray natives;
    for (const auto& [file, expected] : session.files())
        if (file.endsWith(".merix"))
            natives += "@open " + file + "\n@save " + file + ".dxf\n@close\n";
    const Outcome converted = merix::test::runScript(natives, folder.path(), {QStringLiteral("--no-module")});
    ASSERT_EQ(converted.status, 0) << converted.err.constData();
    for (const auto& [file, expected] : session.files()) {
        const QString path = folder.filePath(QString::fromLatin1(file.endsWith(".dxf") ? file : file + ".dxf"));
        const auto [listed, held] = notesIn(path);
        EXPECT_EQ(listed, expected) << file.constData();
        Notes sorted = expected;
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(held, sorted) << file.constData();
    }
}
