#pragma once

#include <QtGlobal>

// The reasons a row shows "ERROR", kept in the record in English and
// translated where they are shown (context "AnalysisError"). The wave header
// reader's own coded messages ("E2006110803 : ...") are kept as they are.

inline constexpr const char* kErrorContext = "AnalysisError";

inline constexpr const char* kErrorNotMp3 = QT_TRANSLATE_NOOP(
    "AnalysisError", "Not MP3 data: no run of consecutive MPEG audio frames was found.");
inline constexpr const char* kErrorOtherFormatAsMp3 =
    QT_TRANSLATE_NOOP("AnalysisError", "This is not MP3 data: the file holds another format.");
inline constexpr const char* kErrorNotVorbis =
    QT_TRANSLATE_NOOP("AnalysisError", "Not Ogg Vorbis data.");
inline constexpr const char* kErrorVorbisHeaderDamaged =
    QT_TRANSLATE_NOOP("AnalysisError", "The Ogg Vorbis header is damaged or too large.");
inline constexpr const char* kErrorNotFlac = QT_TRANSLATE_NOOP("AnalysisError", "Not FLAC data.");
inline constexpr const char* kErrorFlacHeaderDamaged =
    QT_TRANSLATE_NOOP("AnalysisError", "The FLAC header is damaged.");
inline constexpr const char* kErrorFlacFramesDamaged =
    QT_TRANSLATE_NOOP("AnalysisError", "The FLAC audio frames are damaged or cut short.");
inline constexpr const char* kErrorCannotOpen =
    QT_TRANSLATE_NOOP("AnalysisError", "The file cannot be opened.");
inline constexpr const char* kErrorNotFound =
    QT_TRANSLATE_NOOP("AnalysisError", "The file no longer exists.");
inline constexpr const char* kErrorNotRegularFile =
    QT_TRANSLATE_NOOP("AnalysisError", "This is not a regular file.");
inline constexpr const char* kErrorNameNotUtf8 = QT_TRANSLATE_NOOP(
    "AnalysisError", "The file name is not valid UTF-8, so the file cannot be opened.");
inline constexpr const char* kErrorAnalysisCrashed =
    QT_TRANSLATE_NOOP("AnalysisError", "The analysis of this file stopped unexpectedly "
                                       "(Tesk closed during it). It is skipped until the "
                                       "file changes.");
inline constexpr const char* kErrorKeptChanging =
    QT_TRANSLATE_NOOP("AnalysisError", "The file kept changing while it was analysed.");
inline constexpr const char* kErrorDecodeFailed =
    QT_TRANSLATE_NOOP("AnalysisError", "The audio data cannot be decoded.");
