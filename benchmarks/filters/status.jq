def yesno: if . then "yes" else "no" end;
.result
| "Projects: \(.projectCount)    Frameworks: \(.frameworkCount)",
  "Indexing: \(.isIndexing | yesno)    Compiling: \(.isCompiling | yesno)    Watching: \(
    if .isFileWatchingPaused then "PAUSED" else "on" end)",
  "Log cursor: \(.logCursor)",
  (.activeBuild // empty
   | "Building \"\(.projectName)\": \(.itemsCompleted) of \(.itemsTotal)")
