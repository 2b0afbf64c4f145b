#pragma once

#include <memory>

#include "exports/exporter.h"
#include "records/text_conversion.h"

namespace tarno2 {

// The exporters, one a format. Null when the format can't hold what is told of: `refusal` gets status and subject.
// `notes` are added to. The subject, complete by what its row of the table asks for, stays alive.

/// WAVE, codes of 16, 24 or 32 bits; RF64 where 4 GiB do not do.
std::unique_ptr<Exporter> makeWav(const ExportSubject& subject, ExportNotes& notes, ConversionResult& refusal);
/// An array of NumPy, one record of named fields a frame.
std::unique_ptr<Exporter> makeNpy(const ExportSubject& subject, ExportNotes& notes, ConversionResult& refusal);
/// A session of sigrok's tools, version 2: a zip archive of floats and lines.
std::unique_ptr<Exporter> makeSession(const ExportSubject& subject, ExportNotes& notes, ConversionResult& refusal);
/// The same codes with a description of their own.
std::unique_ptr<Exporter> makeDat(const ExportSubject& subject, ExportNotes& notes, ConversionResult& refusal);
/// EDF+C, 16 bits.
std::unique_ptr<Exporter> makeEdf(const ExportSubject& subject, ExportNotes& notes, ConversionResult& refusal);
/// BDF+C, 24 bits.
std::unique_ptr<Exporter> makeBdf(const ExportSubject& subject, ExportNotes& notes, ConversionResult& refusal);

}  // namespace tarno2
