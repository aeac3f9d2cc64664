// SPDX-License-Identifier: MIT
#include "phonomark/dialogs/manager_dialog.h"

#include "host/ap/document.h"
#include "host/ui/windows.h"
#include "phonomark/app/module_state.h"
#include "phonomark/dbutil/border.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/dbutil/opened.h"
#include "phonomark/dbutil/text_conversion.h"
#include "phonomark/dbutil/texts.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/registry/phonomark_manager.h"

#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>

namespace {

constexpr unsigned kNothingSelectedText = 279;

struct Column {
    unsigned text;
    const wchar_t* fallback;
    int width; ///< pixels at scale 1
};
constexpr Column kColumns[] = {
    {281, L"Code", 45}, {282, L"Length", 65}, {283, L"By", 75}, {284, L"Type", 70}, {285, L"Date", 75}};

} // namespace

CPhonomarkManDlg::CPhonomarkManDlg(QWidget* parent)
    : CDialog("IDD_DIALOG_MANAGER", parent) {}

CPhonomarkManDlg::~CPhonomarkManDlg() = default;

bool CPhonomarkManDlg::OnInitDialog() try {
    CDialog::OnInitDialog();
    m_list = item<QTableWidget>("IDC_LIST_PHOBJECT");
    m_play = item<QPushButton>("IDC_BUTTON_PLAY");
    bindSingals(); // without the resource module the window is empty
    makeColumns();
    UpdateVoiceData();
    UpdateButtonShow();
    return true;
} catch (...) {
    return failed("opening the list of notes", true);
}

void CPhonomarkManDlg::bindSingals() {
    if (m_list) {
        connect(m_list, &QTableWidget::itemClicked, this, [this] { UpdateButtonShow(); });
        connect(m_list, &QTableWidget::itemSelectionChanged, this, [this] { UpdateButtonShow(); });
    }
    if (m_play)
        connect(m_play, &QPushButton::clicked, this, [this] { OnBnClickedButtonPlay(); });
    if (auto* cancel = item<QPushButton>("IDCANCEL"))
        connect(cancel, &QPushButton::clicked, this, [this] { OnCancel(); });
}

void CPhonomarkManDlg::makeColumns() {
    if (!m_list)
        return;
    m_list->setShowGrid(true);
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setColumnCount(static_cast<int>(std::size(kColumns)));
    m_list->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    for (int i = 0; i < m_list->columnCount(); ++i) {
        const Column& column = kColumns[i];
        m_list->setHorizontalHeaderItem(i, new QTableWidgetItem(toQString(LocalStr(column.text, column.fallback))));
        m_list->setColumnWidth(i, static_cast<int>(column.width * mxuiDevicePixelRatio()));
    }
}

void CPhonomarkManDlg::UpdateVoiceData(MxApDocument* document) {
    std::vector<MxDbObjectId> ids;
    if (PhonomarkManager* manager = livePhManager())
        manager->GetAllObjects(ids, document ? document : currentDocument());
    m_rows.clear();
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const Opened<MxDbPhonomark> note(ids[i], Mx::kForRead);
        if (!note)
            continue;
        CStdStr<wchar_t> length, by, date;
        note->getDuration(length);
        note->getSpokesman(by);
        note->getDatatime(date);
        m_rows.push_back({std::to_wstring(i), length, by, PhonomarkType(note->getPhonomarkType()), date, ids[i]});
    }
    showRows();
}

void CPhonomarkManDlg::showRows() {
    if (!m_list)
        return;
    m_list->setRowCount(0);
    m_list->setRowCount(static_cast<int>(m_rows.size()));
    for (int row = 0; row < m_list->rowCount(); ++row) {
        const PhManDlgData& note = m_rows[static_cast<std::size_t>(row)];
        int column = 0;
        for (const std::wstring* text : {&note.code, &note.length, &note.by, &note.type, &note.date})
            m_list->setItem(row, column++, new QTableWidgetItem(toQString(*text)));
    }
}

int CPhonomarkManDlg::selectedRow() const {
    const QModelIndexList rows = m_list ? m_list->selectionModel()->selectedRows() : QModelIndexList();
    int first = -1;
    for (const QModelIndex& index : rows)
        if (first < 0 || index.row() < first)
            first = index.row();
    return first;
}

void CPhonomarkManDlg::UpdateButtonShow() try {
    if (m_play)
        m_play->setEnabled(selectedRow() >= 0);
} catch (...) {
    reportFailure("selecting a note");
}

void CPhonomarkManDlg::OnBnClickedButtonPlay() try {
    const int row = selectedRow();
    if (row < 0) {
        QMessageBox::information(this, windowTitle(), toQString(resourceText(kNothingSelectedText)));
        return;
    }
    MxDbPhonomark* note = nullptr;
    if (mxdbOpenObject(note, m_rows[static_cast<std::size_t>(row)].id, Mx::kForRead) != Mx::eOk)
        return;
    const auto* bytes = reinterpret_cast<const char*>(note->getAudioData());
    const unsigned size = note->getAudioDataSize();
    const std::shared_ptr<const void> keepAlive = note->shareAudioData();
    note->close();
    if (bytes)
        m_player.play(bytes, size, keepAlive);
} catch (...) {
    reportFailure("playing a note");
}
