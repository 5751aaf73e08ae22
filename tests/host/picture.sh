# A coloured screen becomes a well-formed picture.
set -e
command -v python3 >/dev/null || {
  echo "skipped: python3 is not installed"
  exit 77
}

printf '\033[1m\033[38;5;80mA <b>\033[0m \033[31m█▌\033[39m ⣿\n╭─╮\n' |
  python3 "$1" | python3 -c '
import sys, xml.etree.ElementTree as tree
picture = tree.parse(sys.stdin).getroot()
kinds = [element.tag.split("}")[1] for element in picture]
texts = [element for element in picture.iter() if element.tag.endswith("text")]
assert kinds.count("path") == 3, kinds  # red blocks, plain dots, the frame
assert [text.text for text in texts] == ["A <b>"], texts
assert texts[0].get("fill") == "#5fd7d7", texts[0].attrib
'
