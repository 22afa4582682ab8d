def plural($word): "\(.) \($word)\(if . == 1 then "" else "s" end)";
.result
| "Compiled \(.compiledFileCount | plural("file")). \(
    .errorCount | plural("error")), \(.warningCount | plural("warning")).",
  (.compiledFileCount as $compiled | .requestedPaths | length
   | select(. != 0 and . < $compiled)
   | "(You asked for \(.); Fernlow rebuilt everything that depended on them.)"),
  (.problems[]
   | "", "\(.severity | ascii_upcase)  \(.title)", (.message | select(. != "")),
     (.syntaxReports[] | .path as $path | .issues[]
      | "  \($path):\(.line):\(.column)  \(.reason)")),
  (select(.timedOut)
   | "", "The wait expired. The work may still be going; ask again with a later --since."),
  (select(.logTruncated)
   | "", "Some log entries were discarded before they could be read, so these counts are lower bounds.")
