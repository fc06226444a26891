;;; nebgit-graph.el --- Drawing of the history of commits  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Draws a graph commit by commit, so that a page of the log can be added to the ones before it.
;; The state is the list of lanes from left to right: the id of the commit that each lane leads to.

;;; Code:

(require 'cl-lib)

(defun nebgit-graph-add (lanes id parents)
  "Add the commit ID with its PARENTS, lists of ids, to the graph that has LANES.
Return a list: the new lanes, the text before the commit, and the texts of the
lines below it, which connect it with its parents."
  (let* ((lanes (if (member id lanes) lanes (append lanes (list id))))
         (column (cl-position id lanes :test #'equal))
         (row (nebgit-graph--row lanes column))
         (below nil))
    (setq lanes (copy-sequence lanes))
    (if (not parents)
        (let ((rest (length (nthcdr (1+ column) lanes))))
          (setq lanes (append (cl-subseq lanes 0 column) (nthcdr (1+ column) lanes)))
          (when (> rest 0)
            (push (nebgit-graph--shift column rest) below)))
      (setf (nth column lanes) (car parents))
      (dolist (parent (cdr parents))
        (unless (member parent lanes)
          (push (nebgit-graph--fork lanes column) below)
          (setq lanes (append (cl-subseq lanes 0 (1+ column)) (list parent)
                              (nthcdr (1+ column) lanes)))))
      (let ((joined (nebgit-graph--join lanes)))
        (setq lanes (car joined)
              below (append (reverse (cdr joined)) below))))
    (list lanes row (nreverse below))))

(defun nebgit-graph--row (lanes column)
  "Return the line of the commit in COLUMN of LANES."
  (mapconcat #'identity
             (cl-loop for index from 0 below (length lanes)
                      collect (if (= index column) "*" "|"))
             " "))

(defun nebgit-graph--fork (lanes column)
  "Return the line with a new lane to the right of COLUMN of LANES."
  (concat (nebgit-graph--bars (1+ column))
          "\\"
          (mapconcat (lambda (_) " \\") (nthcdr (1+ column) lanes) "")))

(defun nebgit-graph--bars (count)
  "Return COUNT bars, the last one without a space."
  (mapconcat (lambda (_) "|") (make-list count nil) " "))

(defun nebgit-graph--shift (column rest)
  "Return the line in which REST lanes right of COLUMN move to the left."
  (concat (mapconcat #'identity (make-list column "| ") "")
          " "
          (mapconcat #'identity (make-list rest "/") " ")))

(defun nebgit-graph--join (lanes)
  "Join the LANES that lead to the same commit.
Return the lanes that are left, and the lines that draw it."
  (let (lines found)
    (while (setq found (cl-loop for index from 0 below (length lanes)
                                for first = (cl-position (nth index lanes) lanes :test #'equal)
                                when (< first index) return (cons first index)))
      (pcase-let ((`(,to . ,from) found))
        (push (nebgit-graph--merge-line to from (length lanes)) lines)
        (setq lanes (append (cl-subseq lanes 0 from) (nthcdr (1+ from) lanes)))))
    (cons lanes (nreverse lines))))

(defun nebgit-graph--merge-line (to from count)
  "Return the line in which lane FROM of COUNT lanes ends in lane TO, left of it."
  (mapconcat #'identity
             (cl-loop for index from 0 below count
                      collect (cond ((= index (1- count)) (if (< index from) "|" ""))
                                    ((< index to) "| ")
                                    ((= index (1- from)) "|/")
                                    ((< index from) "|_")
                                    (t " /")))
             ""))

(provide 'nebgit-graph)
;;; nebgit-graph.el ends here
