#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QLocale>
#include <QString>
#include <vector>

// The text files the user records: blocks of measurements and the trace text, their number
// and date formats, and writing a file so that a failure never costs what was already there.
namespace lxm {

// A collection's first ten readings settle the sensor and are never recorded; a file needs at
// least this many readings taken to hold anything.
constexpr int kRecordFirstSample = 11;
constexpr int kRecordMinSamples = 20;

// A number as the record files carry it: a blank before a non-negative number, a minus sign
// before a negative one, the shortest decimal that reads back as the same double, no exponent
// and no thousands separators (" 0", " 1234.5", "-3").
QString NumberText(double v);

// The date and time of a record: the locale's short date with a four-digit year, and its
// time with seconds but without a time zone ("11/15/2009", "2:30:00 PM" in the US).
QString RecordDate(const QDate& d, const QLocale& locale = QLocale());
QString RecordTime(const QTime& t, const QLocale& locale = QLocale());

// What the header of a measurement block says besides the count.
struct MeasurementHeader {
    QString reg0, reg1;  // hex texts of the two command registers
    QString interval;    // the interval box as typed
    QString date, time;
};

// One block: the header, one line per recorded reading (samples kFirstSample..count-1,
// numbered from 0), and "END"; every line ends in CR LF. The header's Qty is the number of
// data lines.
QByteArray MeasurementBlock(const MeasurementHeader& h, const std::vector<double>& samples, int sampleCount);

// The result line after a write. Its count is one more than the block's Qty, as it always was.
QString RecordedCaption(int sampleCount, const QString& date, const QString& time);

// A trace block: "Trace File" and the date, the text as it is (its own line breaks), "END".
QByteArray TraceBlock(const QString& text, const QString& date, const QString& time);

// Writes a file in one action. The new content goes to a temporary file beside the target,
// which then replaces it, so an interrupted or failed write leaves the old file as it was;
// appending writes the old content and the new block together the same way. Returns the
// system's reason for a failure, empty on success.
QString WriteFileWhole(const QString& path, const QByteArray& content, bool append);

// The message for a file that could not be written: the path, the reason, and what to do.
QString FileErrorMessage(const QString& path, const QString& reason, const QString& whatIsKept);

// A common-dialog filter ("Name|pattern|Name|pattern") in the form the file dialog takes.
QString DialogFilter(const QString& pairs);
// A chosen file name without an extension gets the default one ("*.txt" adds ".txt").
QString WithDefaultExtension(const QString& path, const QString& defaultExtension);

}  // namespace lxm
