// SPDX-License-Identifier: MIT
// MxDbPhonomark, the drawing entity that carries one spoken note. Record in phonomark.cpp, filing in
// phonomark_filing.cpp, drawing in phonomark_drawing.cpp with the signs of icons.cpp. Main thread only, but for the
// playing mark and the shared audio bytes.
#pragma once

#include "host/db/entity.h"
#include "phonomark/dbutil/note_type.h"
#include "phonomark/entity/audio_block.h"
#include "phonomark/entity/wave_format.h"

#include <atomic>
#include <memory>

class MxGiSubEntityTraits;
class MxGiWorldGeometry;

class MxDbPhonomark : public MxDbEntity {
public:
    /// The version of the filed record.
    static constexpr std::uint32_t kCurrentVersionNumber = 1;
    static MxRxClass* gpDesc;

    static MxRxClass* rxInit();
    static MxRxClass* rxInit(MxRxAppNameChange appNameChange);
    static MxRxClass* desc() { return gpDesc; }
    MxRxClass* isA() const override { return desc(); }

    MxDbPhonomark();
    ~MxDbPhonomark() override;

    // --- placement
    /// The insertion point of a Point note, world coordinates.
    void setPosition(const MxGePoint3d& position) { m_position = position; }
    const MxGePoint3d& position() const { return m_position; }
    /// The rectangle of a Region note or the extents of the attached object.
    void setExtents(const MxDbExtents& extents) { m_extents = extents; }
    const MxDbExtents& extents() const { return m_extents; }
    /// Names the object that the note belongs to and takes its extents over, if it can be opened.
    void setAttachObj(MxDbObjectId id);
    MxDbObjectId attachObj() const { return m_attachId; }
    MxDbObjectId replyTo() const { return m_replyId; }
    void setReplyTo(MxDbObjectId id) { m_replyId = id; }
    /// Drawing units in 32 screen pixels; 10.0 when no view can tell.
    double calcRefUnits() const;
    /// The unit that the marker was last sized by.
    double refUnits() const { return m_refUnits; }

    // --- the recording
    /// Takes over `bytes`, a block of the C allocator; the note then holds a recording. False, with nothing changed,
    /// for null. A block held before is not released: the caller calls delAudioData first.
    bool setAudioData(unsigned char* bytes);
    /// The bytes, owned by the note; null when there are none.
    unsigned char* getAudioData() const { return m_pAudioData; }
    /// Keeps the present bytes alive for a worker that plays them.
    std::shared_ptr<const void> shareAudioData() const { return m_audioBlock; }
    /// Releases the bytes; the size stays as it was.
    void delAudioData();
    /// Counts the times that the note was read from a filer, as undo and redo do with it.
    unsigned timesFiledIn() const { return m_timesFiledIn; }
    void setAudioDataSize(unsigned size) { m_audioDataSize = size; }
    unsigned getAudioDataSize() const { return m_audioDataSize; }
    void setWaveFormat(const tWAVEFORMATEX* format);
    void getWaveFormat(tWAVEFORMATEX& format) const;
    /// Says whether the note holds a recording; the note's outline is hidden by it.
    void setRecord(bool record);
    bool isRecord() const { return m_bRecord; }

    // --- texts
    void setSpokesman(const MxString& text) { m_spokesman = text; }
    void setDatatime(const MxString& text) { m_datatime = text; }
    void setDuration(const MxString& text) { m_duration = text; }
    void getSpokesman(CStdStr<wchar_t>& text) const { text = m_spokesman.str(); }
    void getDatatime(CStdStr<wchar_t>& text) const { text = m_datatime.str(); }
    void getDuration(CStdStr<wchar_t>& text) const { text = m_duration.str(); }

    /// A PhonomarkTypeCode; 16 bits of it are kept.
    void setPhonomarkType(int type) { m_type = static_cast<std::int16_t>(type); }
    int getPhonomarkType() const { return m_type; }
    /// Held for other modules.
    void* getDwgViewPtr() const { return m_pDwgView; }

    // --- marks
    void setErasing(bool erasing) { m_bErasing = erasing; }
    bool isErasing() const { return m_bErasing; }
    void setPlaying(bool playing) { m_bPlaying = playing; }
    bool isPlaying() const { return m_bPlaying; }
    bool isRegionShown() const { return m_bShowRegion; }
    /// One mark for all notes: a command that may drag notes is under way.
    static void SetIsDraging(bool draging) { m_IsDraging = draging; }
    static bool IsDraging() { return m_IsDraging; }

    // --- display
    /// Shows or hides the note's region in the drawing, as an undoable unit of its own.
    void ShowRegion(bool show);
    /// Shows what the note is about: the region of a Region note, the object of an Object note.
    void doHighlight();
    void doUnhighlight();
    /// Adds the square of the marker as it was last drawn.
    void getImageRegion(MxDbExtents& extents) const;

    bool subWorldDraw(MxGiWorldDraw* draw) override;
    void subViewportDraw(MxGiViewportDraw* draw) override;
    std::uint32_t subViewportDrawLogicalFlags(MxGiViewportDraw* draw) override;
    std::uint32_t subSetAttributes(MxGiDrawableTraits* traits) override;
    /// The marker and the room for its text. Always eOk: a note that was given no place answers with the far corner of
    /// empty extents.
    Mx::ErrorStatus subGetGeomExtents(MxDbExtents& extents) const override;

    // --- under a hand
    /// Moves the insertion point of a Point note. The others stay where their region or object is.
    Mx::ErrorStatus subTransformBy(const MxGeMatrix3d& map) override;
    /// The insertion point of a Point note; nothing for the others.
    Mx::ErrorStatus subGetGripPoints(std::vector<MxGePoint3d>& grips) const override;
    Mx::ErrorStatus subGetGripPoints(std::vector<MxDbGripData>& grips, double viewUnit, int gripSize,
                                     const MxGeVector3d& viewDirection, int flags) const override;
    Mx::ErrorStatus subMoveGripPointsAt(const std::vector<int>& indices, const MxGeVector3d& offset) override;
    Mx::ErrorStatus subMoveGripPointsAt(const std::vector<void*>& gripData, const MxGeVector3d& offset,
                                        int flags) override;
    Mx::ErrorStatus subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d& pick, const MxGePoint3d& last,
                                      std::vector<MxGePoint3d>& points) const override;
    Mx::ErrorStatus subGetOsnapPoints(MxDbOsnapMode mode, const MxGePoint3d& pick, const MxGePoint3d& last,
                                      std::vector<MxGePoint3d>& points, const MxGeMatrix3d& insertion) const override;
    /// A note is never copied: what was said is said once. No clone, and eOk.
    Mx::ErrorStatus subDeepClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map,
                                 bool isPrimary = true) const override;
    Mx::ErrorStatus subWblockClone(MxDbObject* owner, MxDbObject*& clone, MxDbIdMapping& map,
                                   bool isPrimary = true) const override;

    // --- filing
    Mx::ErrorStatus dwgInFields(MxDbDwgFiler* filer) override;
    Mx::ErrorStatus dwgOutFields(MxDbDwgFiler* filer) const override;
    Mx::ErrorStatus dxfInFields(MxDbDxfFiler* filer) override;
    Mx::ErrorStatus dxfOutFields(MxDbDxfFiler* filer) const override;
    Mx::ErrorStatus dwgInWaveFormatData(MxDbDwgFiler* filer);
    Mx::ErrorStatus dwgOutWaveFormatData(MxDbDwgFiler* filer) const;

    // --- notifications and opening: handed on to the base
    void openedForModify(const MxDbObject* object) override;
    void cancelled(const MxDbObject* object) override;
    void objectClosed(MxDbObjectId id) override;
    void goodbye(const MxDbObject* object) override;
    void copied(const MxDbObject* object, const MxDbObject* copy) override;
    void erased(const MxDbObject* object, bool erasing) override;
    void modified(const MxDbObject* object) override;
    void modifiedGraphics(const MxDbEntity* entity) override;
    void modifiedXData(const MxDbObject* object) override;
    void subObjModified(const MxDbObject* object, const MxDbObject* part) override;
    void modifyUndone(const MxDbObject* object) override;
    void reappended(const MxDbObject* object) override;
    void unappended(const MxDbObject* object) override;
    Mx::ErrorStatus subOpen(Mx::OpenMode mode) override;
    Mx::ErrorStatus subCancel() override;
    Mx::ErrorStatus subClose() override;
    Mx::ErrorStatus cancel() override;
    Mx::ErrorStatus close() override;

    // --- steps of drawing
    virtual void DrawPoint(MxGiWorldDraw* draw);
    virtual void DrawRegion(MxGiWorldDraw* draw);
    virtual Mx::ErrorStatus DrawObject(MxGiWorldDraw* draw);
    virtual void DrawTextW(MxGiWorldDraw* draw);
    /// A light blue plate of the marker's size. subWorldDraw leaves it out: the grey icons stand out better from a dark
    /// or light ground than from the plate.
    virtual void DrawBack(MxGiWorldDraw* draw);
    virtual void DrawImage(MxGiWorldDraw* draw);
    virtual void DrawLight(MxGiWorldDraw* draw);

private:
    /// From the insertion point of a Point note to the marker's lower-left corner.
    MxGeVector3d markerOffset() const;
    void dropShortRecording();
    void showSubject(bool show);

    Mx::ErrorStatus dwgInLocation(MxDbDwgFiler* filer);
    void dwgOutLocation(MxDbDwgFiler* filer) const;
    Mx::ErrorStatus dwgInSamples(MxDbDwgFiler* filer);
    void dxfOutLocation(MxDbDxfFiler* filer) const;
    void dxfOutSamples(MxDbDxfFiler* filer) const;
    struct DxfFields;
    bool dxfInItem(MxDbDxfFiler* filer, DxfFields& fields);
    bool dxfInWaveFormatItem(const MxDbDxfFiler* filer);
    Mx::ErrorStatus adoptDxfFields(MxDbDxfFiler* filer, DxfFields& fields);
    /// Takes the extents of the attached object over, when it can be opened.
    void refreshExtents();
    bool adoptSamples(const void* bytes, std::size_t count, std::size_t size);

    MxGePoint3d m_position;
    MxDbExtents m_extents;
    MxDbObjectId m_attachId;
    MxDbObjectId m_replyId;
    MxGePoint3d m_markPoint; ///< lower-left corner of the marker square, as last drawn
    tWAVEFORMATEX m_waveFormat;
    double m_refUnits;
    unsigned char* m_pAudioData = nullptr;
    std::uint32_t m_audioDataSize = 0;
    void* m_pDwgView = nullptr;
    MxString m_spokesman;
    MxString m_datatime;
    MxString m_duration;
    std::int16_t m_type = kPointNote;
    unsigned m_timesFiledIn = 0;
    bool m_bRecord = false;
    bool m_bShowRegion = true;
    bool m_bErasing = false;
    std::atomic<bool> m_bPlaying = false;
    std::shared_ptr<AudioBlock> m_audioBlock; ///< owns m_pAudioData

    static bool m_IsDraging;
};

/// The duration text of a note without a recording: 0.0 and the inch sign.
extern const wchar_t kEmptyDuration[];
