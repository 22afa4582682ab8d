.result[]
| [.valueType, .propagation, (.language // empty), (.group // empty | "group \(.)")] as $tags
| "\(.name)  [\($tags | join(", "))]"
