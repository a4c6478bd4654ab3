// SPDX-License-Identifier: MIT
//
// The libraries that KVBase is compared with on Linux, and what their contestants have in common. PEER(...) is the
// contestant that it holds, WINDOWS_PEER(...) is none; in the file of this name for Windows it is the other way round.
#pragma once

#include <Poco/Path.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <QByteArray>
#include <QDir>
#include <QExplicitlySharedDataPointer>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMultiHash>
#include <QResource>
#include <QSharedData>
#include <QSharedPointer>
#include <QString>
#include <QStringMatcher>
#include <QTemporaryFile>
#include <QTimer>
#include <boost/algorithm/string/replace.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <boost/locale/encoding_utf.hpp>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#include <memory>
#include <string>

#include "benchmarks/linux/bare_code_page.h"
#include "benchmarks/texts.h"

#define PEER(...) __VA_ARGS__
#define WINDOWS_PEER(...) KV_1_1::bench::Absent()

namespace KV_1_1 {
namespace bench {

using boost::locale::conv::utf_to_utf;
using icu::UnicodeString;

inline u16string plain(QString const& text) {
  return text.toStdU16String();
}
inline u16string plain(UnicodeString const& text) {
  return u16string(text.getBuffer(), static_cast<std::size_t>(text.length()));
}
inline u16string plain(QByteArray const& text) {
  return plain(text.toStdString());
}

template <>
inline QString make<QString>(u16string const& units) {
  return QString(reinterpret_cast<QChar const*>(units.data()), static_cast<qsizetype>(units.size()));
}

// A new converter for a code page; the work of the contestant owns it. Null if there is none.
inline std::shared_ptr<UConverter> icuConverter(char const* page) {
  UErrorCode error = U_ZERO_ERROR;
  return std::shared_ptr<UConverter>(ucnv_open(page, &error), ucnv_close);
}

// Poco returns a text of bytes. Rows that time it include its conversion to UTF-16, which the other contestants return.
inline u16string plain(Poco::Path const& path) {
  return plain(path.toString(Poco::Path::PATH_WINDOWS));
}
inline Poco::Path pocoPath(std::string const& path) {
  return Poco::Path(path, Poco::Path::PATH_WINDOWS);
}

}  // namespace bench
}  // namespace KV_1_1
