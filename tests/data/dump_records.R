# Writes what a program read: dump_records.R script PROGRAM DATA, or dump_records.R files FILE.sav...
# Fields stand between unit separators, and line breaks are marked.
arguments <- commandArgs(TRUE)
commandArgs <- function(...) arguments[3]

escape <- function(x) gsub("\n", "\\n", gsub("\\", "\\\\", x, fixed = TRUE), fixed = TRUE)
plain <- function(x) {
  attributes(x) <- NULL
  x
}
text <- function(x) {
  x <- plain(x)
  if (is.numeric(x)) ifelse(is.na(x), "", sprintf("%.17g", x)) else escape(x)
}
line <- function(...) {
  writeLines(enc2utf8(paste(..., sep = "\x1f")), useBytes = TRUE)
}

dump_column <- function(name, x) {
  label <- attr(x, "label", exact = TRUE)
  line("column", name, if (is.null(label)) "" else escape(label))
  labels <- attr(x, "labels", exact = TRUE)
  for (i in seq_along(labels)) {
    line("label", text(labels[[i]]), escape(names(labels)[i]))
  }
  for (value in attr(x, "na_values", exact = TRUE)) {
    line("missing", text(value))
  }
  range <- attr(x, "na_range", exact = TRUE)
  if (!is.null(range)) line("range", text(range[1]), text(range[2]))
}

dump <- function(name, frame) {
  line("record", name, nrow(frame))
  for (column in names(frame)) dump_column(column, frame[[column]])
  if (nrow(frame) > 0) {
    cells <- stats::setNames(lapply(frame, text), NULL)
    writeLines(enc2utf8(do.call(paste, c(list("row"), cells, sep = "\x1f"))), useBytes = TRUE)
  }
}

if (arguments[1] == "script") {
  source(arguments[2], encoding = "UTF-8")
  for (name in names(records)) dump(name, records[[name]])
} else {
  for (file in arguments[-1]) {
    dump(sub("[.]sav$", "", basename(file)), haven::read_sav(file, user_na = TRUE))
  }
}
