// SPDX-License-Identifier: MIT
// Telling the reactors of an object. Lists may change, and reactors go, while they are being told.
#pragma once

#include "merix/db/access.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <vector>

namespace merix::db {

/// Says of the entries of a list, taken in order, whether they are still in it. Searches only where the list changed.
class StillListed {
public:
    explicit StillListed(const std::vector<MxDbReactorEntry>& list)
        : m_list(list) {}
    bool operator()(const MxDbReactorEntry& entry) {
        if (m_next >= m_list.size() || m_list[m_next] != entry)
            m_next = static_cast<std::size_t>(std::find(m_list.begin(), m_list.end(), entry) - m_list.begin());
        return m_next < m_list.size() && (++m_next, true);
    }

private:
    const std::vector<MxDbReactorEntry>& m_list;
    std::size_t m_next = 0;
};

/// Those who are told may change objects that tell others: chains longer than this are a damaged file's, and end.
constexpr int kLongestTelling = 200;
inline int g_tellingDepth = 0;

struct TellingLevel {
    TellingLevel() { ++g_tellingDepth; }
    ~TellingLevel() { --g_tellingDepth; }
    TellingLevel(const TellingLevel&) = delete;
    TellingLevel& operator=(const TellingLevel&) = delete;
};

/// Runs what a module does on being told. An exception stops here, with a line on stderr: those after it are told all
/// the same, and what is under way (undo, a close) goes on to its end.
template <class Function> void guardedTelling(Function&& function) {
    try {
        function();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "merix: an object reactor failed: %s\n", error.what());
    } catch (...) {
        std::fprintf(stderr, "merix: an object reactor failed\n");
    }
}

/// Calls `tell(MxDbObjectReactor&)` for every transient reactor that is still listed when its turn comes.
template <class Tell> void tellTransient(const MxDbObject& object, Tell tell) {
    const ObjectData& data = object.data();
    if (data.reactors.empty())
        return;
    const std::vector<MxDbReactorEntry> list = data.reactors;
    StillListed stillListed(data.reactors);
    for (const MxDbReactorEntry& entry : list) {
        if (stillListed(entry) && entry.transient)
            guardedTelling([&] { tell(*entry.transient); });
    }
}

/// Calls `tell(MxDbObject&)` for every persistent reactor that can be opened for read.
template <class Tell> void tellPersistent(const MxDbObject& object, Tell tell) {
    const ObjectData& data = object.data();
    if (data.reactors.empty() || g_tellingDepth >= kLongestTelling)
        return;
    const TellingLevel level;
    const std::vector<MxDbReactorEntry> list = data.reactors;
    StillListed stillListed(data.reactors);
    for (const MxDbReactorEntry& entry : list) {
        if (!stillListed(entry) || !mxdbIsPersistentReactor(entry))
            continue;
        MxDbObject* reactor = nullptr;
        if (mxdbOpenObject(reactor, entry.persistent, Mx::kForRead) != Mx::eOk)
            continue;
        guardedTelling([&] { tell(*reactor); });
        reactor->close();
    }
}

/// Sets the erased mark, tells the object's reactors and the database's listeners. No undo step.
void setErased(MxDbObject& object, bool erased);

} // namespace merix::db
