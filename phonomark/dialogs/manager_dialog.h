// SPDX-License-Identifier: MIT
#pragma once

#include "host/db/object_id.h"
#include "host/ui/dialog.h"
#include "phonomark/audio/player.h"

#include <string>
#include <vector>

class MxApDocument;
class QPushButton;
class QTableWidget;

/// One note in the list.
struct PhManDlgData {
    std::wstring code; ///< its place in the registry's list, from 0
    std::wstring length;
    std::wstring by;
    std::wstring type;
    std::wstring date;
    MxDbObjectId id;
};

/// "VOICEMAN": the notes of the current drawing, to look through and to hear. Main thread only.
class CPhonomarkManDlg : public CDialog {
public:
    explicit CPhonomarkManDlg(QWidget* parent);
    ~CPhonomarkManDlg() override;

    bool OnInitDialog() override;
    /// Reads the document's notes anew, those of the current one by default. A note that cannot be opened is left out;
    /// its number is not given to another.
    void UpdateVoiceData(MxApDocument* document = nullptr);
    /// The buttons that work on a note need a selected row.
    void UpdateButtonShow();
    void OnBnClickedButtonPlay();

private:
    void bindSingals();
    void makeColumns();
    void showRows();
    /// The first selected row; -1 when there is none.
    int selectedRow() const;

    QTableWidget* m_list = nullptr;
    QPushButton* m_play = nullptr;
    std::vector<PhManDlgData> m_rows;
    VkAudioPlayer m_player;
};
