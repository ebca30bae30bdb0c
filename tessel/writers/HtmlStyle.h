#pragma once

#include <QString>

/*!
 * The layout that all pages share, behind a page's own rules: narrow screens wrap, and paper has
 * small letters and no margins of ours. No character of it is escaped in XML.
 */
inline QString pageStyle()
{
    return QStringLiteral(
        "body{margin:0 auto;max-width:60rem;padding:1rem}"
        "table{border-collapse:collapse}th,td{text-align:start;vertical-align:top}"
        "@media print{body{font-size:10pt;max-width:none;padding:0}tr{break-inside:avoid}}");
}
