// Names and values of the object model, as its users know them, and the numbers of its errors.
//
//   if (recordset.state() == ado::adStateOpen) recordset.close();
//
// Constants; any thread.
#pragma once

#include <cstdint>

namespace ado {

/// What state() returns; a recordset that is fetching returns Open | Fetching.
inline constexpr int adStateClosed = 0;
inline constexpr int adStateOpen = 1;
inline constexpr int adStateConnecting = 2;
inline constexpr int adStateExecuting = 4;
inline constexpr int adStateFetching = 8;

/// Where the rows are kept.
inline constexpr int adUseServer = 2;
inline constexpr int adUseClient = 3;

inline constexpr int adOpenUnspecified = -1;
inline constexpr int adOpenForwardOnly = 0;
inline constexpr int adOpenKeyset = 1;
inline constexpr int adOpenDynamic = 2;
inline constexpr int adOpenStatic = 3;

inline constexpr int adLockUnspecified = -1;
inline constexpr int adLockReadOnly = 1;
inline constexpr int adLockPessimistic = 2;
inline constexpr int adLockOptimistic = 3;
inline constexpr int adLockBatchOptimistic = 4;

/// Options of an open.
inline constexpr int adOptionUnspecified = -1;
inline constexpr int adCmdText = 1;
inline constexpr int adAsyncFetch = 64;

inline constexpr int adSearchForward = 1;
inline constexpr int adSearchBackward = -1;

/// What absolutePosition() returns where there is no current record.
inline constexpr int adPosUnknown = -1;
inline constexpr int adPosBOF = -2;
inline constexpr int adPosEOF = -3;

/// The status of an event.
inline constexpr int adStatusOK = 1;
inline constexpr int adStatusErrorsOccurred = 2;

inline constexpr int adClipString = 2;
inline constexpr int adGetRowsRest = -1;

/// Types of fields.
inline constexpr int adSmallInt = 2;
inline constexpr int adInteger = 3;
inline constexpr int adSingle = 4;
inline constexpr int adDouble = 5;
inline constexpr int adCurrency = 6;
inline constexpr int adDate = 7;
inline constexpr int adBoolean = 11;
inline constexpr int adUnsignedTinyInt = 17;
inline constexpr int adGUID = 72;
inline constexpr int adNumeric = 131;
inline constexpr int adVarWChar = 202;
inline constexpr int adLongVarWChar = 203;
inline constexpr int adVarBinary = 204;
inline constexpr int adLongVarBinary = 205;

/// Numbers of errors: those of the object model ...
inline constexpr std::int32_t adErrInvalidArgument = 3001;
inline constexpr std::int32_t adErrNoCurrentRecord = 3021;
inline constexpr std::int32_t adErrItemNotFound = 3265;
inline constexpr std::int32_t adErrObjectClosed = 3704;
inline constexpr std::int32_t adErrObjectOpen = 3705;
inline constexpr std::int32_t adErrProviderNotFound = 3706;
inline constexpr std::int32_t adErrOperationCancelled = 3712;

/// ... and those that the provider passes on.
inline constexpr std::int32_t kErrorFile = -2147467259;           ///< 0x80004005: unusable file
inline constexpr std::int32_t kErrorReadOnly = -2147217911;       ///< 0x80040E09
inline constexpr std::int32_t kErrorParameter = -2147217904;      ///< 0x80040E10: unknown column
inline constexpr std::int32_t kErrorStatement = -2147217900;      ///< 0x80040E14: anything else
inline constexpr std::int32_t kErrorAlreadyExists = -2147217887;  ///< 0x80040E21: column or index
inline constexpr std::int32_t kErrorNoSuchTable = -2147217865;    ///< 0x80040E37

}  // namespace ado
