// Every text goes through write(), which flushes the file, so that the log is complete up to its
// last text if the process crashes. The state is initialized at compile time, since the log opens
// while the library is being loaded.

#include "foundation/platform.h"
#include "foundation/services.h"
#include "foundation/text.h"
#include "ravolt/zlf.h"

#include <cstdarg>
#include <cstring>
#include <string_view>
#include <utility>

namespace {

constexpr char libraryName[] = "Zenlor foundation 0.4";
constexpr std::size_t lineSize = 1024;

struct State {
    std::FILE *file = nullptr; // NULL: logging is off
    bool tables = false;       // those of identifiers and timers exist
    bool html = false;         // set by a name with ".html", never cleared
    bool consoleEcho = true;
    std::size_t limit = 0;   // bytes of the file; 0 for any number
    std::size_t written = 0; // bytes of the file
    bool limitReached = false;
    bool lineOpen = false; // the last text had no line end
};
constinit State state;

using Line = char[lineSize];

// Appends whole pieces to a line; append is false when a piece does not fit.
class LineWriter {
  public:
    explicit LineWriter(Line &target) : line(target) { line[0] = '\0'; }

    bool append(std::string_view piece) {
        if (length + piece.size() >= lineSize)
            return false;
        std::memcpy(line + length, piece.data(), piece.size());
        length += piece.size();
        line[length] = '\0';
        return true;
    }

  private:
    Line &line;
    std::size_t length = 0;
};

void translateToHtml(const Line &text, Line &html) {
    LineWriter writer(html);
    for (const char *c = text; *c; ++c) {
        std::string_view piece(c, 1);
        if (*c == '\n')
            piece = "<BR>\n";
        else if (c[0] == ' ' && c[1] == ' ')
            piece = "&nbsp"; // On purpose: no semicolon.
        if (!writer.append(piece))
            return;
    }
}

// On purpose: for the console the finished text is used as a format a second time.
void echo(const Line &text) {
    Line printed;
    ravolt::applyFormat(printed, text);
    std::fputs(printed, stdout);
}

// The text as the file has it: the text itself, or its translation in `html`.
const char *pieceOf(const Line &text, Line &html) {
    if (!state.html)
        return text;
    translateToHtml(text, html);
    return html;
}

void write(const char *piece) {
    std::fputs(piece, state.file);
    std::fflush(state.file);
    const std::size_t length = std::strlen(piece);
    state.written += length;
    if (length)
        state.lineOpen = piece[length - 1] != '\n';
}

// Everything after the first text that does not fit is left out, so that what is there is complete.
bool fitsLimit(const char *piece) {
    if (!state.limit)
        return true;
    if (state.limitReached || state.written + std::strlen(piece) <= state.limit)
        return !state.limitReached;
    const std::size_t limit = std::exchange(state.limit, 0); // not of these lines
    if (state.lineOpen)
        zlfLog("\n");
    zlfLog("   [!] Log limit of %lu bytes reached, the rest is left out\n",
           static_cast<unsigned long>(limit));
    state.limit = limit;
    state.limitReached = true;
    return false;
}

struct TimeText {
    char text[64];
};

// Day, month, year, hour, minute, second and millisecond, without leading zeros.
TimeText dateAndTime() {
    const ravolt::platform::LocalTime t = ravolt::platform::localTime();
    TimeText result;
    ravolt::formatText(result.text, "%u/%u/%u %u:%u:%u.%u", t.day, t.month, t.year, t.hour,
                       t.minute, t.second, t.millisecond);
    return result;
}

TimeText timeOfDay() {
    const ravolt::platform::LocalTime t = ravolt::platform::localTime();
    TimeText result;
    ravolt::formatText(result.text, "%u:%u:%u.%u", t.hour, t.minute, t.second, t.millisecond);
    return result;
}

bool openFile(const char *filename) {
    state.file = ravolt::platform::replaceFile(filename).release();
    if (!state.file)
        return false;
    state.written = 0;
    state.limitReached = state.lineOpen = false;
    if (std::strstr(filename, ".html")) {
        state.html = true;
        zlfLog("<HTML><BODY>");
    }
    return true;
}

void logHeader(const char *time) {
    if (state.html)
        zlfLog("<H4>[%s started at %s]\n<HR ALIGN=CENTER WIDTH=\"100%%\" SIZE=\"2\">\n\n</H4>",
               libraryName, time);
    else
        zlfLog("[%s started at %s]\n"
               "-------------------------------------------------------\n\n",
               libraryName, time);
}

double megabytes(std::uint32_t bytes) { return bytes / 1024.0 / 1024.0; }

void logStatistics() {
    const ravolt::MemoryFigures figures = ravolt::memoryFigures();
    zlfLog("Final memory ratio: %d (%u/%u)\n",
           static_cast<int>(figures.allocations - figures.releases), figures.allocations,
           figures.releases);
    zlfLog("Max. physical memory usage: %.2f mb (%d bytes)\n", megabytes(figures.peakPhysical),
           static_cast<int>(figures.peakPhysical));
    zlfLog("Total allocated memory (zlfMalloc): %.2f mb (%u bytes)\n",
           megabytes(figures.bytesRequested), figures.bytesRequested);
}

// The title of an error, cut to 80 bytes.
void makeTitle(char (&title)[80], const char *from, const char *detail) {
    from = from ? from : "";
    if (detail && *detail)
        ravolt::formatText(title, "%s - Error (%s)", from, detail);
    else
        ravolt::formatText(title, "%s - Error", from);
}

} // namespace

// The tables are created once until the log closes: new ones would issue identifiers and timers
// that are in use.
bool zlfOpenLog(const char *filename) {
    if (state.file || (!filename && state.tables))
        return false;
    if (filename && !openFile(filename))
        return false;
    ravolt::restartPeak();
    const TimeText time = dateAndTime();
    if (!state.tables) {
        ravolt::createIdTable();
        ravolt::markAllTimersFree();
        state.tables = true;
    }
    logHeader(time.text);
    return true;
}

bool zlfCloseLog() {
    ravolt::releaseIdTable(); // first, so that its own block counts in the figures below
    state.tables = false;
    if (!state.file)
        return true;
    const std::size_t limit = std::exchange(state.limit, 0); // not of the statistics
    const TimeText time = dateAndTime();
    if (state.html)
        zlfLog("<H4>\n<HR ALIGN=CENTER WIDTH=\"100%%\" SIZE=\"2\">");
    else
        zlfLog("\n-------------------------------------------------------\n");
    logStatistics();
    zlfLog("[%s terminated at %s]\n", libraryName, time.text);
    if (state.html)
        zlfLog("</H4></BODY></HTML>");
    std::fclose(state.file);
    state.file = nullptr;
    state.limit = limit;
    return true;
}

bool zlfLog(const char *format, ...) {
    if (!state.file || !format)
        return false;
    Line text = "";
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    Line html;
    const char *const piece = pieceOf(text, html);
    if (!fitsLimit(piece))
        return false;
    if (state.consoleEcho)
        echo(text);
    write(piece);
    return true;
}

void zlfSetLogLimit(std::size_t bytes) {
    state.limit = bytes;
    state.limitReached = false;
}

bool zlfLogError(const char *from, const char *detail, const char *format, ...) {
    char text[ravolt::textSize] = "";
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format ? format : "", arguments);
    va_end(arguments);

    char title[80];
    makeTitle(title, from, detail);
    if (state.consoleEcho)
        std::printf("ERROR\n   from: %s\n   text: %s\n", title, text);

    const TimeText time = timeOfDay();
    zlfLog(state.html ? "Time:  <B>%s</B>\n" : "Time:  %s\n", time.text);
    zlfLog(state.html ? "From:  <B>%s</B>\n" : "From:  %s\n", title);
    zlfLog(state.html ? "Error: <B>%s</B>\n\n" : "Error: %s\n\n", text);
    return false;
}

void zlfSetConsoleEcho(bool on) { state.consoleEcho = on; }
