#pragma once

/*!
 * How a CSPro dictionary is read. Each is whole; docs/formats.md tells where they differ.
 *
 * Format: CSPro data dictionary (.dcf).
 */
enum class CSProReading {
    Established, /*!< the reading that hosts have relied on so far; the default everywhere */
    AsWritten, /*!< what the dictionary says, in text form or JSON */
};
