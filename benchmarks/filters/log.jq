.result.entries[] | "\(.cursor)  \(.severity | ascii_upcase)  \(.title)"
