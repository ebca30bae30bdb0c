# figures.R DATA TYPE START WIDTH DECIMALS WSTART WWIDTH WDECIMALS MISSING: figures of the columns of text data, a line
# each: count, mean, deviation, quartiles of the second definition; the same weighted; then each value, its count and weight.
arguments <- commandArgs(trailingOnly = TRUE)
place <- as.integer(arguments[3:8])
lines <- readLines(arguments[1])
lines <- lines[substr(lines, 1, nchar(arguments[2])) == arguments[2]]
numbers <- function(start, width, decimals) {
    text <- trimws(substr(lines, start, start + width - 1))
    text[text %in% strsplit(arguments[9], ",")[[1]]] <- ""
    number <- suppressWarnings(as.numeric(text))
    ifelse(grepl(".", text, fixed = TRUE), number, number / 10^decimals)
}
x <- numbers(place[1], place[2], place[3])
w <- numbers(place[4], place[5], place[6])
w[is.na(w) | w < 0] <- 0
w <- w[!is.na(x)]
x <- x[!is.na(x)]
tell <- function(...) cat(formatC(c(...), digits = 17, format = "g", width = 1), "\n")
tell(length(x), mean(x), sd(x), quantile(x, c(.25, .5, .75), type = 2))
middle <- sum(w * x) / sum(w)
ordered <- order(x[w > 0])
value <- x[w > 0][ordered]
below <- cumsum(w[w > 0][ordered])
quartile <- function(share) {
    at <- which(below > share * sum(w) * (1 - 1e-12))[1]
    isExact <- abs(below[at] - share * sum(w)) < 1e-12 * sum(w)
    if (isExact) (value[at] + value[at + 1]) / 2 else value[at]
}
tell(sum(w), middle, sqrt(sum(w * (x - middle)^2) / (sum(w) - 1)), quartile(.25), quartile(.5), quartile(.75))
for (one in sort(unique(x))) tell(one, sum(x == one), sum(w[x == one]))
