// SPDX-License-Identifier: Apache-2.0
/** Colours of a terminal in a line of text. @module */

const COLOURS = ['black', 'red', 'green', 'yellow', 'blue', 'magenta', 'cyan', 'white'];
const FOREGROUND = 30, BRIGHT_FOREGROUND = 90;

/** The colour that the numbers of an escape sequence choose; '' for none, undefined for no change. */
function colourOf(numbers) {
  let colour;
  for (const number of numbers.split(';').map(Number)) {
    if (number === 0 || number === FOREGROUND + 9) {
      colour = '';
    }
    colour = COLOURS[number - FOREGROUND] ?? COLOURS[number - BRIGHT_FOREGROUND] ?? colour;
  }
  return colour;
}

/**
 * Cuts a line at its escape sequences, which are left out.
 * @param {string} line
 * @returns {{text: string, colour: string}[]} pieces with the name of their colour, or ''
 */
export function colouredPieces(line) {
  const pieces = [];
  let colour = '';
  for (const part of line.split(/(\x1b\[[0-9;]*[A-Za-z])/)) {
    if (part.startsWith('\x1b[')) {
      colour = part.endsWith('m') ? colourOf(part.slice(2, -1)) ?? colour : colour;
    } else if (part) {
      pieces.push({text: part, colour});
    }
  }
  return pieces;
}
