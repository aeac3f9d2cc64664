// SPDX-License-Identifier: MIT
// Statuses and open modes that cross the contract. The values that a module compares are fixed here once.
#pragma once

namespace Mx {

enum ErrorStatus : int {
    eOk = 0,
    eInvalidInput = 3,             ///< an argument is outside what the operation accepts
    eNoDatabase = 4,               ///< there is no working database, or the object belongs to none
    eNoDocument = 5,               ///< there is no such open document
    eLockConflict = 6,             ///< the document is locked by another command
    eWrongClass = 7,               ///< the object is not of the class that was asked for
    eWrongDatabase = 8,            ///< the object belongs to another database
    eInvalidExtents = 9,           ///< the entity has no extents
    eNotApplicable = 10,           ///< the object has nothing of what the operation works on
    eCannotScaleNonUniformly = 11, ///< the entity cannot take a map that is no similarity
    eReadOnly = 12,                ///< the variable can be read only
    eOutOfRange = 13,              ///< the value is of the right type and outside its range
    eNullEntity = 20,              ///< a null pointer where an entity is needed
    eNullObjectId = 21,            ///< the id names nothing
    eKeyNotFound = 22,             ///< a table or dictionary has no such key
    eDuplicateKey = 23,            ///< a table or dictionary has that key already
    eUnknownHandle = 24,           ///< the database has no object of that handle
    eNotResident = 25,             ///< the id is reserved but no object was read for it
    eWasErased = 26,               ///< the object is erased and erased ones were not asked for
    eOpenForRead = 27,             ///< open for read elsewhere, so it cannot be opened for write
    eOpenForWrite = 28,            ///< open for write elsewhere
    eNotOpen = 29,                 ///< the object is not open in the mode the operation needs
    eAlreadyInDatabase = 30,       ///< the object has been added to a database before
    eHasExtensionDictionary = 31,
    eNotEmpty = 32,        ///< the container still holds entries
    eEndOfItems = 41,      ///< the filer has no further item in this object
    eItemExpected = 50,    ///< an item of another group code was expected
    eItemUnreadable = 51,  ///< an item could not be read
    eSubclassMissing = 52, ///< the subclass marker is missing
    eEndOfStream = 60,     ///< the binary stream is shorter than its items say
    eItemType = 61,        ///< the binary stream holds an item of another type
    eFileNotFound = 70,
    eFileUnreadable = 71,
    eFileUnwritable = 72,
    eFileNotADrawing = 73,
    eFileDamaged = 74,
    eOnLockedLayer = 87, ///< write access to an entity on a locked layer
    eNewerVersion = 301, ///< the record was written by a later version of its class
};

enum OpenMode : int {
    kForRead = 0,  ///< any number of readers
    kForWrite = 1, ///< one writer and no reader
};

} // namespace Mx
