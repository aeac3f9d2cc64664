// SPDX-License-Identifier: MIT
#pragma once

#include "host/ap/document.h"

/// The document-manager reactor: keeps the registry and the tag window in step with documents that come, change places
/// and go. One static instance (g_dcReactor) lives as long as the module is mapped. Main thread only.
class PhonomarkDcReactor : public MxApDocManagerReactor {
public:
    static MxRxClass* gpDesc;
    static MxRxClass* rxInit();
    static MxRxObject* makeDefault();
    static MxRxClass* desc() { return gpDesc; }
    MxRxClass* isA() const override { return desc(); }

    /// With `autoAttach` it attaches itself, if the host has a document manager.
    explicit PhonomarkDcReactor(bool autoAttach = true);
    ~PhonomarkDcReactor() override;

    bool IsAttached() const { return m_attached; }
    /// The document manager; null when there is none.
    MxApDocManager* Subject() const;
    /// Attaches anew; true when attached then.
    bool Attach();
    void Detach();

    void documentCreated(MxApDocument* document) override;
    void documentToBeActivated(MxApDocument* document) override;
    void documentActivated(MxApDocument* document) override;
    void documentToBeDeactivated(MxApDocument* document) override;
    void documentToBeDestroyed(MxApDocument* document) override;

private:
    bool m_attached = false;
};

extern PhonomarkDcReactor g_dcReactor;
