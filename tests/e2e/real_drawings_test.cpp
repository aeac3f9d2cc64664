// SPDX-License-Identifier: MIT
// Drawings that other programs made, through the real program: opened, seen whole, given a note, saved, and read by
// two other DXF readers. The sheets come with the package librecad-data.
#include "tests/support/dxf_tags.h"
#include "tests/support/process.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QImage>

#include <algorithm>
#include <cmath>
#include <map>

using namespace merix::test;

namespace {

constexpr int kWidth = 1200, kHeight = 900;

/// The ten largest drawings of the library, each file once (some are links), and the generated plan.
std::vector<std::string> drawings() {
    QDirIterator walk(QStringLiteral("/usr/share/librecad/library"), {QStringLiteral("*.dxf")}, QDir::Files,
                      QDirIterator::Subdirectories);
    std::vector<QFileInfo> files;
    while (walk.hasNext())
        files.emplace_back(walk.next());
    std::sort(files.begin(), files.end(), [](const QFileInfo& a, const QFileInfo& b) {
        return a.size() != b.size() ? a.size() > b.size() : a.filePath() < b.filePath();
    });
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < std::min<std::size_t>(files.size(), 10); ++i)
        paths.push_back(files[i].filePath().toStdString());
    paths.emplace_back(MERIX_BINARY_DIR "/samples/plan-20000.dxf");
    return paths;
}

struct Box {
    double x0 = 1e99, y0 = 1e99, x1 = -1e99, y1 = -1e99;
    void add(double x, double y) {
        x0 = std::min(x0, x), y0 = std::min(y0, y), x1 = std::max(x1, x), y1 = std::max(y1, y);
    }
};

/// A straight piece of the drawing in model space.
struct Piece {
    double x0, y0, x1, y1;
};

/// Places what stands in a block where an insert shows it.
struct Placing {
    double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0; ///< x' = a x + c y + e, y' = b x + d y + f
    void apply(double& x, double& y) const {
        const double px = x;
        x = a * px + c * y + e;
        y = b * px + d * y + f;
    }
};

using Blocks = std::map<QByteArray, std::vector<Record>>;

Blocks blocks(const std::vector<Tag>& tags) {
    Blocks found;
    QByteArray name;
    for (const Record& record : records(tags, "BLOCKS")) {
        if (record[0].value == "BLOCK")
            name = value(record, 2);
        found[name].push_back(record);
    }
    return found;
}

/// All lines, those of inserted blocks too.
void collect(const std::vector<Record>& list, const Blocks& all, const Placing& placing, std::vector<Piece>& pieces) {
    for (const Record& record : list) {
        if (number(record, 67) != 0)
            continue;
        if (record[0].value == "LINE") {
            Piece piece{number(record, 10), number(record, 20), number(record, 11), number(record, 21)};
            placing.apply(piece.x0, piece.y0);
            placing.apply(piece.x1, piece.y1);
            pieces.push_back(piece);
        } else if (record[0].value == "INSERT") {
            const auto block = all.find(value(record, 2));
            if (block == all.end())
                continue;
            const Record& head = block->second.front();
            const double sx = value(record, 41).isEmpty() ? 1 : number(record, 41);
            const double sy = value(record, 42).isEmpty() ? 1 : number(record, 42);
            const double angle = number(record, 50) * std::acos(-1.0) / 180;
            Placing own{sx * std::cos(angle), sx * std::sin(angle), -sy * std::sin(angle), sy * std::cos(angle), 0, 0};
            double x = number(head, 10), y = number(head, 20); // the block's base point comes to the insertion point
            own.apply(x, y);
            own.e = number(record, 10) - x;
            own.f = number(record, 20) - y;
            Placing both{own.a, own.b, own.c, own.d, own.e, own.f};
            both.a = placing.a * own.a + placing.c * own.b;
            both.b = placing.b * own.a + placing.d * own.b;
            both.c = placing.a * own.c + placing.c * own.d;
            both.d = placing.b * own.c + placing.d * own.d;
            placing.apply(both.e, both.f);
            collect(block->second, all, both, pieces);
        }
    }
}

std::vector<Piece> lines(const std::vector<Tag>& tags) {
    std::vector<Piece> pieces;
    collect(records(tags, "ENTITIES"), blocks(tags), {}, pieces);
    return pieces;
}

/// The box of all lines and of the corners of polylines in model space.
Box boxOf(const std::vector<Tag>& tags) {
    Box box;
    for (const Piece& piece : lines(tags)) {
        box.add(piece.x0, piece.y0);
        box.add(piece.x1, piece.y1);
    }
    for (const Record& record : records(tags, "ENTITIES"))
        if (record[0].value == "LWPOLYLINE" && number(record, 67) == 0)
            for (std::size_t i = 0; i + 1 < record.size(); ++i)
                if (record[i].code == 10 && record[i + 1].code == 20)
                    box.add(record[i].value.toDouble(), record[i + 1].value.toDouble());
    return box;
}

struct RealDrawing : testing::TestWithParam<std::string> {
    QTemporaryDir folder;
    QString copy, saved;

    void SetUp() override {
        const QString original = QString::fromStdString(GetParam());
        ASSERT_TRUE(QFile::exists(original)) << GetParam() << ": package librecad-data is missing";
        copy = folder.filePath(QStringLiteral("drawing.dxf"));
        saved = folder.filePath(QStringLiteral("saved.dxf"));
        ASSERT_TRUE(QFile::copy(original, copy));
    }

    /// Opens the drawing, places a note in its middle, saves it elsewhere.
    void takeNote() {
        const Box box = boxOf(readTags(copy));
        const QByteArray at =
            QByteArray::number((box.x0 + box.x1) / 2, 'f', 3) + ',' + QByteArray::number((box.y0 + box.y1) / 2, 'f', 3);
        const Outcome outcome = runScript("PHONOMARK\n" + at + "\n@save saved.dxf\n", folder.path(), {copy});
        ASSERT_EQ(outcome.status, 0) << outcome.err.toStdString() << outcome.out.toStdString();
    }
};

TEST_P(RealDrawing, IsSeenWholeInThePicture) {
    const QString png = folder.filePath(QStringLiteral("picture.png"));
    const Outcome outcome = run(QStringLiteral(MERIX_BINARY_DIR "/bin/merix"),
                                {QStringLiteral("--render"), copy, png, QStringLiteral("--size"),
                                 QStringLiteral("%1x%2").arg(kWidth).arg(kHeight)},
                                folder.path());
    ASSERT_EQ(outcome.status, 0) << outcome.err.toStdString();
    const QImage picture = QImage(png).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(picture.size(), QSize(kWidth, kHeight));

    const QRgb background = picture.pixel(0, 0);
    Box seen;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            if (picture.pixel(x, y) != background)
                seen.add(x, y);
    // Nothing touches the edge, so nothing is cut off; and the picture has the drawing's proportions.
    EXPECT_GT(seen.x0, 0);
    EXPECT_GT(seen.y0, 0);
    EXPECT_LT(seen.x1, kWidth - 1);
    EXPECT_LT(seen.y1, kHeight - 1);
    const auto tags = readTags(copy);
    const Box box = boxOf(tags);
    const double scale = (seen.x1 - seen.x0) / (box.x1 - box.x0);
    EXPECT_NEAR((seen.y1 - seen.y0) / (box.y1 - box.y0), scale, scale * 0.02);

    // The middle of every line is painted where it should be.
    const auto pieces = lines(tags);
    std::size_t painted = 0;
    for (const Piece& piece : pieces) {
        const int px = static_cast<int>(std::lround(seen.x0 + ((piece.x0 + piece.x1) / 2 - box.x0) * scale));
        const int py = static_cast<int>(std::lround(seen.y1 - ((piece.y0 + piece.y1) / 2 - box.y0) * scale));
        bool hit = false;
        for (int dy = -2; dy <= 2; ++dy)
            for (int dx = -2; dx <= 2; ++dx)
                hit = hit || (picture.valid(px + dx, py + dy) && picture.pixel(px + dx, py + dy) != background);
        painted += hit;
    }
    EXPECT_GT(pieces.size(), 0U);
    EXPECT_EQ(painted, pieces.size());
}

TEST_P(RealDrawing, KeepsEveryTagInItsOrderWhenANoteIsAdded) {
    ASSERT_NO_FATAL_FAILURE(takeNote());
    const auto before = readTags(copy), after = readTags(saved);
    ASSERT_FALSE(before.empty());
    const Difference difference = compare(before, after, "$HANDSEED");
    ASSERT_EQ(difference.lost, -1) << "first tag lost: " << before[static_cast<std::size_t>(difference.lost)].code
                                   << ' ' << before[static_cast<std::size_t>(difference.lost)].value.toStdString();
    // What came is the note, its list with the dictionary that holds it, and the class records.
    std::vector<QByteArray> kinds;
    for (const Tag& tag : difference.added)
        if (tag.code == 0)
            kinds.push_back(tag.value);
    std::sort(kinds.begin(), kinds.end());
    const std::vector<QByteArray> ours{"CLASS", "DICTIONARY", "PHONOMARK", "XRECORD"};
    kinds.erase(std::unique(kinds.begin(), kinds.end()), kinds.end());
    for (const QByteArray& kind : kinds)
        EXPECT_TRUE(std::find(ours.begin(), ours.end(), kind) != ours.end() || kind == "SECTION" || kind == "ENDSEC")
            << kind.toStdString();
    EXPECT_EQ(std::count_if(difference.added.begin(), difference.added.end(),
                            [](const Tag& tag) { return tag.code == 0 && tag.value == "PHONOMARK"; }),
              1);
}

TEST_P(RealDrawing, IsTheSameFileWhenSavedUntouched) {
    const Outcome outcome =
        run(QStringLiteral(MERIX_BINARY_DIR "/bin/merix"),
            {QStringLiteral("--no-module"), QStringLiteral("--convert"), copy, saved}, folder.path());
    ASSERT_EQ(outcome.status, 0) << outcome.err.toStdString();
    QFile before(copy), after(saved);
    ASSERT_TRUE(before.open(QIODevice::ReadOnly) && after.open(QIODevice::ReadOnly));
    EXPECT_TRUE(before.readAll() == after.readAll());
}

TEST_P(RealDrawing, WithANoteIsReadByOtherProgramsWithoutErrors) {
    ASSERT_NO_FATAL_FAILURE(takeNote());
    // The auditor reports errors of the file; those the drawing had before the note are not ours.
    const QString audit = QStringLiteral("import sys, ezdxf\n"
                                         "from ezdxf import recover\n"
                                         "doc = ezdxf.readfile(sys.argv[1])\n"
                                         "auditor = doc.audit()\n"
                                         "for e in auditor.errors: print('error', e.code, e.message)\n"
                                         "notes = [e for e in doc.modelspace() if e.dxftype() == 'PHONOMARK']\n"
                                         "print('notes', len(notes))\n");
    const Outcome audited =
        run(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-c"), audit, saved}, folder.path());
    ASSERT_EQ(audited.status, 0) << audited.err.toStdString();
    EXPECT_FALSE(audited.out.contains("error")) << audited.out.toStdString();
    EXPECT_TRUE(audited.out.contains("notes 1")) << audited.out.toStdString();

    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    const Outcome exported =
        run(QStringLiteral("librecad"), {QStringLiteral("dxf2pdf"), saved}, folder.path(), {}, environment);
    EXPECT_EQ(exported.status, 0) << exported.err.toStdString();
    EXPECT_GT(QFileInfo(folder.filePath(QStringLiteral("saved.pdf"))).size(), 1000);
}

std::string nameOf(const testing::TestParamInfo<std::string>& info) {
    std::string name = QFileInfo(QString::fromStdString(info.param)).completeBaseName().toStdString();
    std::replace_if(
        name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name + "_" + std::to_string(info.index);
}

INSTANTIATE_TEST_SUITE_P(Library, RealDrawing, testing::ValuesIn(drawings()), nameOf);

} // namespace
