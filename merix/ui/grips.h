// SPDX-License-Identifier: MIT
// The points by which the hand takes selected entities.
#pragma once

#include "host/db/entity.h"

#include <vector>

namespace merix::ui {

struct Grip {
    MxDbObjectId id;
    int index = 0; ///< in what the entity's getGripPoints gives
    MxGePoint3d point;
    bool hot = false; ///< moves with the next drag
};

class Grips {
public:
    /// The grips of these entities. Those that were hot stay so; nothing for more entities than a hand works on.
    void gather(const std::vector<MxDbObjectId>& ids);
    const std::vector<Grip>& all() const { return m_grips; }
    std::vector<Grip> hot() const;

    /// The nearest grip in the square of `reach` to each side of `world`; null when there is none.
    const Grip* at(const MxGePoint3d& world, double reach) const;
    /// Grips in one point are one to the hand: corners that entities share stay together.
    void setHot(const MxGePoint3d& point, bool hot);
    bool isHot(const MxGePoint3d& point) const;
    void coolDown();

private:
    std::vector<Grip> m_grips;
};

} // namespace merix::ui
