.result
| (.files[]
   | [(.outputAction | select(. != "compile") | ascii_upcase),
      (select(.outputPathIsChosen) | "path chosen"),
      (select(.outputActionIsChosen) | "action chosen"),
      (select(.isShadowItem) | "outside the project"),
      (select(.exists == false) | "MISSING")] as $tags
   | "\(.relativePath // .path)\(if $tags == [] then "" else "  [\($tags | join(", "))]" end)",
     (.outputPath // empty | "    → \(.)")),
  "", "\(.files | length) of \(.total).",
  (select(.truncated) | "More to come: ask again with --offset \(.offset + (.files | length)).")
