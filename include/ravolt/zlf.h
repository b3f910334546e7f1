#pragma once

// The foundation: one process-wide log, a counting allocator, timers, identifiers, a reader for
// key and value text files, and file helpers. The library opens its log as it is loaded and closes
// it as it is unloaded; timers and identifiers work between the two. Every function reports a
// failure by its result and, where stated, by one line in the log. Nothing here is safe to call
// from two threads at once.

#include "ravolt/api.h"

#include <cstddef>
#include <cstdio>

// The library's record of one timer; no function returns it. Timers are identified by their index,
// 0 to 7; -1 means none.
struct zlfTIMER {
    float fps;           // rate / factor, at the last adjourn
    float factor;        // elapsed time in units of 1 / rate seconds, at the last adjourn
    float rate;          // given at creation; 0 marks a free timer
    long long frequency; // counter ticks per second
    long long current;   // counter at the last adjourn
    long long last;      // counter at the previous adjourn
};

// A text file in memory. The record is the caller's; its data belong to the parser.
struct zlfPARSER {
    char *data = nullptr; // the whole file, from zlfMalloc
    int size = 0;         // bytes
    int position = 0;     // offset of the line that is read next
};

// --- Log

// Opens the log, replacing an old file, and creates the tables of identifiers and timers. A name
// that contains ".html" makes an HTML log, and every later log of the process is HTML too. False
// when a log is open already or the file cannot be written; nothing has changed then. The log is a
// regular file or a character device: a symbolic link is not followed, a FIFO is refused, and of a
// file with several hard links only this name is replaced.
// NULL creates the tables only and returns true; the log stays closed. A later call with a name
// opens the log and uses the same tables. If the tables exist already, NULL changes nothing and
// returns false: new tables would issue identifiers that are in use.
RV_API bool zlfOpenLog(const char *filename);

// Writes the closing statistics, closes the log and releases the identifiers. Always true.
RV_API bool zlfCloseLog();

// printf into the log, at most 1023 bytes at a time; what is longer is cut. The file is complete up
// to this text when the call returns. False when no log is open, and beyond zlfSetLogLimit.
__attribute__((format(printf, 1, 2))) RV_API bool zlfLog(const char *format, ...);

// Logs an error in three lines: the time, a title, and the text, cut at 255 bytes. The title is
// `from`, then " - Error" and, unless `detail` is NULL or empty, " (", `detail` and ")"; it is cut
// at 79 bytes. Always false, so that a caller can return its result.
__attribute__((format(printf, 3, 4))) RV_API bool zlfLogError(const char *from, const char *detail,
                                                              const char *format, ...);

// Additional: the largest size of the log in bytes; 0, the default, for no limit. A text that would
// exceed it, and every later one, is neither written nor printed, and zlfLog is false for it; one
// line says so. The closing statistics are written all the same. The limit applies to the log that
// is open, and to later ones. Recommended for programs that run for days: under constant pressure
// on the video memory, the collector logs every texture in every frame.
RV_API void zlfSetLogLimit(std::size_t bytes);

// Whether log texts are also printed to standard output; on by default. There, "%%" in a finished
// text is printed as one percent sign.
RV_API void zlfSetConsoleEcho(bool on);

// --- Memory

// malloc and free with counters, which the closing log reports. NULL when there is no memory,
// without a log line. zlfFree counts NULL as any other pointer.
RV_API void *zlfMalloc(std::size_t bytes);
RV_API void zlfFree(void *block);

// --- Timers

// A timer whose factor counts units of 1 / rate seconds; its index, or -1 and a log line when all
// eight are in use. A rate of 0 leaves the timer free.
RV_API int zlfNewTimer(float rate);
// A log line for a free timer or a bad index.
RV_API void zlfFreeTimer(int timer);

// Measures the time since the last adjourn, or since the creation. False and a log line for a free
// timer or an index outside 0 to 7.
RV_API bool zlfAdjournTimer(int timer);

// The figures of the last adjourn; -1.0 and a log line for a free timer or a bad index. The factor
// is 1.0 when no time had passed.
RV_API float zlfGetTimerFactor(int timer);
RV_API float zlfGetTimerFps(int timer);

// --- Identifiers

// The lowest free identifier, 1 to 65535; 0 and a log line when there is none, or no table.
RV_API unsigned int zlfNewId();
// Releases an identifier. A log line for 0, for one above 65535, and for one that is free.
RV_API void releaseId(unsigned int id);

// --- Key and value files

// Reads the file into memory; false and a log line when it cannot be read or is empty. Close every
// parser that was opened: opening it a second time leaks the memory of the first file. After a
// failure do not close it: after the line "is corrupted" `data` is not NULL, but its memory has
// been freed.
RV_API bool zlfOpenParser(zlfPARSER *parser, const char *filename);
// Releases the memory. False and a log line for NULL and for a parser that is not open.
RV_API bool zlfCloseParser(zlfPARSER *parser);

// Overwrites with blanks from each `marker` to the end of its line, within quotes too. True when
// there was at least one.
RV_API bool zlfRemoveComments(zlfPARSER *parser, char marker);

// The next line without its line feed, or the next line without blanks and tabs. `line` has room
// for 256 bytes; what is longer is cut. False at the end of the file.
// On purpose: a carriage return before a line feed stays in the line; and when no line feed is left
// in the file, a line that a carriage return ends loses its last character.
RV_API bool zlfReadLine(zlfPARSER *parser, char *line);
RV_API bool zlfReadToken(zlfPARSER *parser, char *line);

// The value of the first line that contains `key` anywhere, blanks and tabs of the line not
// counted: "window size" in a file is the key "windowsize", a key that contains a blank itself is
// never found, and a number of "1 024" is 1024. The character after the key is skipped, whatever
// it is. False, with `value` unchanged, when no line has the key. A missing number is 0. These do
// not move the position of the parser.
RV_API bool zlfGetInt(zlfPARSER *parser, const char *key, int *value);
RV_API bool zlfGetFloat(zlfPARSER *parser, const char *key, float *value);

// The text between the first and the last double quote of the value, without its blanks and tabs.
// `value` has room for 256 bytes. Without a pair of quotes the result is false and `value`
// contains the raw value.
RV_API bool zlfGetString(zlfPARSER *parser, const char *key, char *value);

// --- Files and time

// Bytes, or -1 when the name is NULL, the file cannot be opened or its size does not fit. Here and
// wherever the library reads a file, only regular files and symbolic links to them can be opened,
// but no folder, FIFO or device.
RV_API int zlfGetFileSize(const char *filename);

// Whether the file opens for reading; NULL gives false.
RV_API bool zlfFileExists(const char *filename);

// fopen; NULL when it fails.
RV_API FILE *zlfOpenFile(const char *filename, const char *mode);

// File dialogs of the system: true when the user confirmed, and `file`, with room for 260 bytes,
// then contains the path. On this system there are none, and both are false.
RV_API bool zlfOpenFileDialog(char *file, const char *filter);
RV_API bool zlfSaveFileDialog(char *file, const char *extension, const char *filter);

// The low 32 bits of the time in units of 100 nanoseconds since the year 1601.
RV_API unsigned int zlfGetSystemTime();
