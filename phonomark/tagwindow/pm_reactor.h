// SPDX-License-Identifier: MIT
#pragma once

#include "host/ed/input_point.h"

class MxApDocument;
class MxDbPhonomark;

/// The hover monitor of one document: brings the tag window up over the note under the cursor and takes it away over
/// empty space. Main thread only.
class PhonomarkPmReactor : public MxEdInputPointMonitor {
public:
    static MxRxClass* gpDesc;
    static MxRxClass* rxInit();
    static MxRxObject* makeDefault();
    static MxRxClass* desc() { return gpDesc; }
    MxRxClass* isA() const override { return desc(); }

    /// Attaches itself to the document, which may be null.
    explicit PhonomarkPmReactor(MxApDocument* document = nullptr);
    /// Detaches and hides the tag window, unless it plays.
    ~PhonomarkPmReactor() override;

    bool IsAttached() const { return m_document != nullptr; }
    MxApDocument* Subject() const { return m_document; }
    void Attach(MxApDocument* document);
    void Detach();

    bool excludeFromOsnapCalculation() const { return false; }
    Mx::ErrorStatus monitorInputPoint(const MxEdInputPoint& input) override;

private:
    static void hover(MxDbPhonomark& note, const MxGePoint3d& cursor);
    void attachTo(MxApDocument* document);

    MxApDocument* m_document = nullptr;
};
